#pragma once

#include "kit/foundation/geometry.h"
#include "kit/ui/text_layout.h"

namespace kit {

// Where TextLayout::render puts a laid-out block, the same on every backend:
// the bitmap's size, the lines' horizontal alignment and the block's
// vertical centring. The backend only measures and draws.

// The bitmap render() draws into, and the area and scale it stands for: an
// empty area is the text's own size, an unusable scale is 1; each side is
// ceil(area × scale) pixels (less a rounding error's slack), at most
// `largestSide`, the pixels transparent. Either side zero gives an empty
// bitmap (no pixels at all).
struct TextFrame {
  Size area;
  double scale = 1;
  TextBitmap bitmap;
};
TextFrame textFrame(Size area, double scale, Size textSize, int largestSide);

// How far a line moves right to take its place in `room` points of spare
// width (the line's box less the line).
double alignedOffset(TextAlignment alignment, double room);

// The top of a block of `textSize` centred vertically in `area`; never above
// the area's top.
double blockTop(Size area, Size textSize);

}  // namespace kit
