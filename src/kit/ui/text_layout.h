#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/ui/font.h"

namespace kit {

enum class TextAlignment { Left = 0, Center = 1, Right = 2 };

// The platform's line break modes. Every mode wraps onto further lines while
// lines are allowed: WordWrap breaks between words (inside a word only when it
// is wider than the line), CharWrap anywhere; the truncating modes put an
// ellipsis on the last line shown when text is left over; Clip just cuts.
enum class LineBreakMode {
  WordWrap = 0,
  CharWrap = 1,
  Clip = 2,
  TruncateHead = 3,
  TruncateTail = 4,
  TruncateMiddle = 5,
};

// Everything that decides how a block of text is laid out. The box is the
// space the text may use: lines wrap at its width, and lines that do not fit
// wholly in its height (or beyond numberOfLines, 0 = no limit) are dropped.
struct TextBlock {
  static constexpr double kUnbounded = std::numeric_limits<double>::max();

  std::string text;
  Font font;
  Size box = {kUnbounded, kUnbounded};
  LineBreakMode lineBreakMode = LineBreakMode::WordWrap;
  int numberOfLines = 0;
  TextAlignment alignment = TextAlignment::Left;

  friend bool operator==(const TextBlock&, const TextBlock&) = default;
};

// Pixels of rendered text: straight (not premultiplied) RGBA, 8 bits each,
// rows top to bottom, 4 * width bytes per row.
struct TextBitmap {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgba;
};

// One laid-out TextBlock with the platform's fonts; defined by the backend
// (the desktop's with Pango). Measuring and drawing use the same layout, with
// unhinted metrics, so text drawn at any scale covers exactly the measured
// size. Main thread only; the desktop's first layout of a process loads
// fontconfig (about 10 ms).
class TextLayout {
 public:
  explicit TextLayout(TextBlock block);
  // Loads fontconfig and the common faces (Latin, bold, Chinese fallback) now
  // rather than during the first frame that shows text. Optional.
  static void warmUp();

  const TextBlock& block() const { return block_; }
  // Whole points: the width of the widest line shown (not the box width) by
  // the height of the lines shown. Zero when nothing fits.
  Size size() const { return size_; }
  int lineCount() const { return lines_; }

  // Draws the text in `color` into a bitmap of `area` (points) times `scale`,
  // rounded up to whole pixels: lines aligned within the area's width, the
  // block centred vertically (a label's placement). An empty area is drawn at
  // size().
  TextBitmap render(Size area, double scale, Color color) const;

 private:
  TextBlock block_;
  Size size_;
  int lines_ = 0;
  int ellipsizedLines_ = 0;  // lines of the ellipsized layout, when text is left over
};

// The platform's string measurement: text wrapped at the constraint's width
// with any number of lines, cut at the last whole line within its height.
// A constraint of zero or less in either direction fits nothing.
Size sizeWithFont(std::string_view text, const Font& font, Size constrainedToSize,
                  LineBreakMode lineBreakMode = LineBreakMode::WordWrap);

}  // namespace kit
