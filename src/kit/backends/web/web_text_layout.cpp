// kit::TextLayout for the browser build: the portable line breaker over the
// canvas's measurements (canvas_fonts.h), lines drawn with fillText.
#include <algorithm>
#include <cmath>

#include "kit/backends/web/canvas_fonts.h"
#include "kit/ui/line_breaker.h"
#include "kit/ui/text_layout.h"

namespace kit {
namespace {

constexpr int kLargestBitmapSide = 8192;

BrokenText breakBlock(const TextBlock& block) {
  return breakLines(
      block, [&](std::string_view run) { return web::measureRun(run, block.font); },
      web::metricsOf(block.font).lineHeight);
}

int pixels(double points, double scale) {
  const double p = std::ceil(points * scale - 1e-6);
  return p > 0 ? static_cast<int>(std::min<double>(p, kLargestBitmapSide)) : 0;
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
  if (!(area.width > 0) || !(area.height > 0))
    area = size_;
  if (!(scale > 0) || !std::isfinite(scale))
    scale = 1;
  TextBitmap bitmap;
  bitmap.width = pixels(area.width, scale);
  bitmap.height = pixels(area.height, scale);
  if (bitmap.width == 0 || bitmap.height == 0)
    return {};
  bitmap.rgba.assign(static_cast<size_t>(bitmap.width) * bitmap.height * 4, 0);
  if (lines_ == 0)
    return bitmap;
  const BrokenText broken = breakBlock(block_);
  const web::FontMetrics m = web::metricsOf(block_.font);
  // Lines align within the box (an unbounded one is as wide as the area);
  // the block is centred vertically.
  const double width = std::min(area.width, block_.box.width);
  double y = std::max(0.0, (area.height - size_.height) / 2);
  std::vector<web::DrawnLine> lines;
  for (const BrokenLine& line : broken.lines) {
    double x = 0;
    if (block_.alignment == TextAlignment::Center)
      x = (width - line.width) / 2;
    else if (block_.alignment == TextAlignment::Right)
      x = width - line.width;
    lines.push_back({line.text, x, y + m.ascent});
    y += m.lineHeight;
  }
  web::drawLines(block_.font, color, scale, bitmap.width, bitmap.height, lines.data(), lines.size(),
                 bitmap.rgba.data());
  return bitmap;
}

Size sizeWithFont(std::string_view text, const Font& font, Size constrainedToSize,
                  LineBreakMode lineBreakMode) {
  TextBlock block;
  block.text = std::string(text);
  block.font = font;
  block.box = constrainedToSize;
  block.lineBreakMode = lineBreakMode;
  return TextLayout(std::move(block)).size();
}

}  // namespace kit
