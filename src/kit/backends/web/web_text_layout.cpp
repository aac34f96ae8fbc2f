// kit::TextLayout for the browser build: the portable line breaker over the
// canvas's measurements (canvas_fonts.h), lines drawn with fillText.
#include <algorithm>
#include <utility>
#include <vector>

#include "kit/backends/web/canvas_fonts.h"
#include "kit/ui/line_breaker.h"
#include "kit/ui/text_layout.h"
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

TextLayout::TextLayout(TextBlock block) : block_(std::move(block)) {
  const BrokenText broken = breakBlock(block_);
  size_ = broken.size;
  lines_ = static_cast<int>(broken.lines.size());
  // The line breaker ellipsizes while it breaks: no second layout to keep.
  ellipsizedLines_ = 0;
}

void TextLayout::warmUp() {
  web::metricsOf(Font::systemFontOfSize(16));
  web::metricsOf(Font::boldSystemFontOfSize(16));
  web::measureRun("Aa \u65b0", Font::boldSystemFontOfSize(16));
}

TextBitmap TextLayout::render(Size area, double scale, Color color) const {
  TextFrame frame = textFrame(area, scale, size_, kLargestBitmapSide);
  if (frame.bitmap.width == 0 || lines_ == 0)
    return std::move(frame.bitmap);
  TextBitmap& bitmap = frame.bitmap;
  const BrokenText broken = breakBlock(block_);
  const web::FontMetrics m = web::metricsOf(block_.font);
  // Lines align within the box (an unbounded one is as wide as the area);
  // the block is centred vertically.
  const double width = std::min(frame.area.width, block_.box.width);
  double y = blockTop(frame.area, size_);
  std::vector<web::DrawnLine> lines;
  for (const BrokenLine& line : broken.lines) {
    lines.push_back({line.text, alignedOffset(block_.alignment, width - line.width), y + m.ascent});
    y += m.lineHeight;
  }
  web::drawLines(block_.font, color, frame.scale, bitmap.width, bitmap.height, lines.data(),
                 lines.size(), bitmap.rgba.data());
  return std::move(bitmap);
}

}  // namespace kit
