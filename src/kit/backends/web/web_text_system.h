#pragma once

#include "kit/platform/text_system.h"

namespace kit {

// The browser's text: the portable line breaker (kit/ui/line_breaker.h) over
// the canvas's measurements (canvas_fonts.h), lines drawn with fillText;
// under node, the estimates canvas_fonts.h describes. Main thread only.
class WebTextSystem final : public TextSystem {
 public:
  TextMetrics layout(const TextBlock& block) override;
  TextBitmap render(const TextBlock& block, const TextMetrics& metrics, Size area, double scale,
                    Color color) override;
  double firstBaseline(const TextBlock& block) override;
  void warmUp() override;
};

}  // namespace kit
