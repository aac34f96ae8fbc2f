#pragma once

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/platform/text_block.h"

namespace kit {

// What a text system found laying out a TextBlock: the size in whole points
// (the widest line shown by the height of the lines shown; zero when nothing
// fits) and the number of lines shown. `ellipsizedLines` is the text
// system's own note for render(): the lines it ellipsized the text to when
// some was left over, 0 otherwise.
struct TextMetrics {
  Size size;
  int lineCount = 0;
  int ellipsizedLines = 0;
  friend bool operator==(const TextMetrics&, const TextMetrics&) = default;
};

// The platform's text: measures, breaks and draws strings in its fonts (the
// desktop's Pango, the browser's canvas). Made by the backend and owned by
// whoever installed it (kit::Graphics); TextLayout, sizeWithFont and
// firstBaseline reach it there. Main thread only: it may keep font caches.
class TextSystem {
 public:
  virtual ~TextSystem() = default;

  // Lays `block` out in its box with the block's font, line-break mode and
  // line limit. Measuring and drawing use the same unhinted layout, so text
  // drawn at any scale covers exactly the measured size.
  virtual TextMetrics layout(const TextBlock& block) = 0;

  // Draws a block laid out by layout() in `color` into a bitmap of `area`
  // points times `scale` (see kit/ui/text_placement.h for the placement
  // every backend shares).
  virtual TextBitmap render(const TextBlock& block, const TextMetrics& metrics, Size area,
                            double scale, Color color) = 0;

  // Points from the top of the block to the baseline of its first line; 0
  // for empty text.
  virtual double firstBaseline(const TextBlock& block) = 0;

  // Loads fonts now rather than during the first frame that shows text.
  virtual void warmUp() {}
};

}  // namespace kit
