#include "kit/backends/web/web_text_system.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "kit/backends/web/canvas_fonts.h"
#include "kit/ui/line_breaker.h"
#include "kit/ui/text_placement.h"

namespace kit {
namespace {

constexpr int kLargestBitmapSide = 8192;

BrokenText breakBlock(const TextBlock& block) {
  return breakLines(
      block, [&](std::string_view run) { return web::measureRun(run, block.font); },
      web::metricsOf(block.font).lineHeight);
}

}  // namespace

TextMetrics WebTextSystem::layout(const TextBlock& block) {
  const BrokenText broken = breakBlock(block);
  // The line breaker ellipsizes while it breaks: no second layout to note.
  return {broken.size, static_cast<int>(broken.lines.size()), 0};
}

void WebTextSystem::warmUp() {
  web::metricsOf(Font::systemFontOfSize(16));
  web::metricsOf(Font::boldSystemFontOfSize(16));
  web::measureRun("Aa \u65b0", Font::boldSystemFontOfSize(16));
}

// The font's ascent, as the canvas reports it.
double WebTextSystem::firstBaseline(const TextBlock& block) {
  if (block.text.empty())
    return 0;
  return web::metricsOf(block.font).ascent;
}

TextBitmap WebTextSystem::render(const TextBlock& block, const TextMetrics& metrics, Size area,
                                 double scale, Color color) {
  TextFrame frame = textFrame(area, scale, metrics.size, kLargestBitmapSide);
  if (frame.bitmap.width == 0 || metrics.lineCount == 0)
    return std::move(frame.bitmap);
  TextBitmap& bitmap = frame.bitmap;
  const BrokenText broken = breakBlock(block);
  const web::FontMetrics m = web::metricsOf(block.font);
  // Lines align within the box (an unbounded one is as wide as the area);
  // the block is centred vertically.
  const double width = std::min(frame.area.width, block.box.width);
  double y = blockTop(frame.area, metrics.size);
  std::vector<web::DrawnLine> lines;
  for (const BrokenLine& line : broken.lines) {
    lines.push_back({line.text, alignedOffset(block.alignment, width - line.width), y + m.ascent});
    y += m.lineHeight;
  }
  web::drawLines(block.font, color, frame.scale, bitmap.width, bitmap.height, lines.data(),
                 lines.size(), bitmap.rgba.data());
  return std::move(bitmap);
}

}  // namespace kit
