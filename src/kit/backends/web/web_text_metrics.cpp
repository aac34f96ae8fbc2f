// kit::firstBaseline for the browser build: the font's ascent, as the canvas
// reports it (see canvas_fonts.h).
#include "kit/backends/web/canvas_fonts.h"
#include "kit/render/text_metrics.h"

namespace kit {

double firstBaseline(const TextBlock& block) {
  if (block.text.empty())
    return 0;
  return web::metricsOf(block.font).ascent;
}

}  // namespace kit
