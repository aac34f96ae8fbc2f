#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "kit/foundation/font.h"
#include "kit/foundation/geometry.h"

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

}  // namespace kit
