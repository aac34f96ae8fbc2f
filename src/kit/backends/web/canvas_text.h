#pragma once

#include <map>
#include <string>

#include "kit/platform/text_system.h"

namespace kit::web {

// Text measured and drawn by the browser's canvas (measureText, fillText),
// broken into lines by the portable line breaker. Fonts are CSS font lists
// that end in CJK families, so Chinese text shows real glyphs from whatever
// the system has. Metrics are cached per font. Main thread only.
class CanvasText final : public TextSystem {
 public:
  double measureRun(std::string_view text, const Font& font) override;
  FontMetrics metrics(const Font& font) override;
  Measured layout(const TextBlock& block) override;
  TextBitmap draw(const TextBlock& block, Size area, double scale, Color color) override;
  void warmUp() override;

  // The CSS font for a kit font at `scale` pixels per point.
  static std::string cssFont(const Font& font, double scale = 1);

 private:
  std::map<std::string, FontMetrics> metrics_;
};

}  // namespace kit::web
