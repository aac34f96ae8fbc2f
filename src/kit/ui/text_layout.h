#pragma once

#include <string_view>

#include "kit/foundation/color.h"
#include "kit/foundation/font.h"
#include "kit/foundation/geometry.h"
#include "kit/platform/text_block.h"
#include "kit/platform/text_system.h"

namespace kit {

// One laid-out TextBlock with the platform's fonts, measured and drawn by
// the installed text system (kit/foundation/graphics.h; the desktop's is
// Pango). Measuring and drawing use the same layout, with unhinted metrics,
// so text drawn at any scale covers exactly the measured size. Main thread
// only; the desktop's first layout of a process loads fontconfig (about
// 10 ms).
class TextLayout {
 public:
  explicit TextLayout(TextBlock block);
  // Loads fontconfig and the common faces (Latin, bold, Chinese fallback) now
  // rather than during the first frame that shows text. Optional.
  static void warmUp();

  const TextBlock& block() const { return block_; }
  // Whole points: the width of the widest line shown (not the box width) by
  // the height of the lines shown. Zero when nothing fits.
  Size size() const { return metrics_.size; }
  int lineCount() const { return metrics_.lineCount; }

  // Draws the text in `color` into a bitmap of `area` (points) times `scale`,
  // rounded up to whole pixels: lines aligned within the area's width, the
  // block centred vertically (a label's placement). An empty area is drawn at
  // size().
  TextBitmap render(Size area, double scale, Color color) const;

 private:
  TextBlock block_;
  TextMetrics metrics_;
};

// The platform's string measurement: text wrapped at the constraint's width
// with any number of lines, cut at the last whole line within its height.
// A constraint of zero or less in either direction fits nothing.
Size sizeWithFont(std::string_view text, const Font& font, Size constrainedToSize,
                  LineBreakMode lineBreakMode = LineBreakMode::WordWrap);

}  // namespace kit
