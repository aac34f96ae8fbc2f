#pragma once

#include <string>
#include <string_view>

#include "kit/foundation/font.h"
#include "kit/ui/text_layout.h"

namespace kit::web {

// Text measured and drawn by the page's canvas (measureText, fillText), for
// this backend's TextLayout. Fonts are CSS font lists that end in CJK
// families, so Chinese shows real glyphs from whatever the system has.
// Without a page (node) widths are estimated from the characters (about
// half an em for narrow ones, a whole em for wide ones) and nothing is drawn:
// headless runs need sizes, not pixels. Main thread only.
struct FontMetrics {
  double ascent = 0;
  double descent = 0;
  double lineHeight = 0;
};

std::string cssFont(const Font& font);
double measureRun(std::string_view text, const Font& font);
FontMetrics metricsOf(const Font& font);

// One line of text drawn into an RGBA bitmap (rows top to bottom, straight
// alpha) of width × height pixels, scaled by `scale`; `lines` are drawn at
// the given x and baseline (points). False without a page.
struct DrawnLine {
  std::string_view text;
  double x = 0;
  double baseline = 0;
};
bool drawLines(const Font& font, const Color& color, double scale, int width, int height,
               const DrawnLine* lines, size_t count, uint8_t* rgbaOut);

}  // namespace kit::web
