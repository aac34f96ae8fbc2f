#pragma once

#include <memory>
#include <string_view>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/ui/text_layout.h"

namespace kit {

// A font's metrics at one size, in points.
struct FontMetrics {
  double ascent = 0;
  double descent = 0;
  double lineHeight = 0;
};

// Text as a backend supplies it: measuring a run of text in a font, and
// drawing a laid-out block into a bitmap. Line breaking, truncation and
// alignment (TextBlock) are the portable kit's, built on measureRun(); a
// backend whose own layout engine does them (the desktop's) may answer
// layout() itself, as long as measuring and drawing agree.
// Owned by the backend; borrowed by the renderer and the UI. Main thread only.
class TextSystem {
 public:
  virtual ~TextSystem() = default;

  // Width in points of `text` on one line, unwrapped.
  virtual double measureRun(std::string_view text, const Font& font) = 0;
  virtual FontMetrics metrics(const Font& font) = 0;

  // The size of `block` laid out (whole points) and its line count. The
  // default lays it out with the portable line breaker over measureRun().
  struct Measured {
    Size size;
    int lines = 0;
  };
  virtual Measured layout(const TextBlock& block) = 0;

  // Draws `block` in `color` into a bitmap of `area` (points) times `scale`,
  // lines aligned within the area, the block centred vertically.
  virtual TextBitmap draw(const TextBlock& block, Size area, double scale, Color color) = 0;

  // Optional: load fonts now rather than during the first frame with text.
  virtual void warmUp() {}
};

}  // namespace kit
