#include "kit/backends/web/canvas_text.h"

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>

#include "kit/ui/line_breaker.h"

// One measuring context, kept in Module.twinlanesText.
// clang-format off
EM_JS(double, tl_text_measure, (const char* font, const char* text, int length), {
  const t = Module.twinlanesText ||
            (Module.twinlanesText = { ctx: document.createElement('canvas').getContext('2d') });
  t.ctx.font = UTF8ToString(font);
  return t.ctx.measureText(UTF8ToString(text, length)).width;
});

// Ascent and descent of the font's bounding box, for a line's height.
EM_JS(double, tl_text_ascent, (const char* font), {
  const ctx = Module.twinlanesText.ctx;
  ctx.font = UTF8ToString(font);
  return ctx.measureText('Hg').fontBoundingBoxAscent;
});

EM_JS(double, tl_text_descent, (const char* font), {
  const ctx = Module.twinlanesText.ctx;
  ctx.font = UTF8ToString(font);
  return ctx.measureText('Hg').fontBoundingBoxDescent;
});

// Starts a bitmap of width x height pixels scaled by `scale`.
EM_JS(void, tl_text_begin, (int width, int height, double scale, const char* font, double r,
                            double g, double b, double a), {
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const ctx = canvas.getContext('2d');
  ctx.scale(scale, scale);
  ctx.font = UTF8ToString(font);
  ctx.textBaseline = 'alphabetic';
  ctx.fillStyle = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                  Math.round(b * 255) + ',' + a + ')';
  Module.twinlanesText.drawing = ctx;
});

EM_JS(void, tl_text_line, (const char* text, int length, double x, double baseline), {
  Module.twinlanesText.drawing.fillText(UTF8ToString(text, length), x, baseline);
});

EM_JS(void, tl_text_end, (uint8_t* out), {
  const ctx = Module.twinlanesText.drawing;
  HEAPU8.set(ctx.getImageData(0, 0, ctx.canvas.width, ctx.canvas.height).data, out);
  Module.twinlanesText.drawing = null;
});
// clang-format on

namespace kit::web {
namespace {

constexpr int kLargestSide = 8192;

int pixels(double points, double scale) {
  const double p = std::ceil(points * scale - 1e-6);
  return p > 0 ? static_cast<int>(std::min<double>(p, kLargestSide)) : 0;
}

}  // namespace

std::string CanvasText::cssFont(const Font& font, double scale) {
  std::string css;
  if (font.italic)
    css += "italic ";
  if (font.bold)
    css += "bold ";
  css += std::to_string(font.pointSize * scale) + "px ";
  std::string family;
  for (const char c : font.family) {
    if (c != '"' && c != '\\' && c != ';')
      family += c;
  }
  if (!family.empty())
    css += "\"" + family + "\", ";
  // Arial's metric twin first, then the CJK families of common systems.
  css +=
      "\"Liberation Sans\", Arial, Helvetica, \"WenQuanYi Micro Hei\", \"Noto Sans CJK SC\", "
      "\"PingFang SC\", \"Hiragino Sans GB\", \"Microsoft YaHei\", sans-serif";
  return css;
}

double CanvasText::measureRun(std::string_view text, const Font& font) {
  if (text.empty())
    return 0;
  return tl_text_measure(cssFont(font).c_str(), text.data(), static_cast<int>(text.size()));
}

FontMetrics CanvasText::metrics(const Font& font) {
  const std::string css = cssFont(font);
  if (const auto it = metrics_.find(css); it != metrics_.end())
    return it->second;
  measureRun("Hg", font);  // makes the measuring context
  FontMetrics m;
  m.ascent = tl_text_ascent(css.c_str());
  m.descent = tl_text_descent(css.c_str());
  m.lineHeight = m.ascent + m.descent;
  if (!(m.lineHeight > 0)) {
    m.ascent = font.pointSize * 0.905;
    m.descent = font.pointSize * 0.212;
    m.lineHeight = m.ascent + m.descent;
  }
  metrics_.emplace(css, m);
  return m;
}

TextSystem::Measured CanvasText::layout(const TextBlock& block) {
  const FontMetrics m = metrics(block.font);
  const BrokenText broken = breakLines(
      block, [&](std::string_view run) { return measureRun(run, block.font); }, m.lineHeight);
  return {broken.size, static_cast<int>(broken.lines.size())};
}

TextBitmap CanvasText::draw(const TextBlock& block, Size area, double scale, Color color) {
  const FontMetrics m = metrics(block.font);
  const BrokenText broken = breakLines(
      block, [&](std::string_view run) { return measureRun(run, block.font); }, m.lineHeight);
  if (!(area.width > 0) || !(area.height > 0))
    area = broken.size;
  if (!(scale > 0) || !std::isfinite(scale))
    scale = 1;
  TextBitmap bitmap;
  bitmap.width = pixels(area.width, scale);
  bitmap.height = pixels(area.height, scale);
  if (bitmap.width == 0 || bitmap.height == 0)
    return {};
  bitmap.rgba.assign(static_cast<size_t>(bitmap.width) * bitmap.height * 4, 0);
  if (broken.lines.empty())
    return bitmap;
  tl_text_begin(bitmap.width, bitmap.height, scale, cssFont(block.font).c_str(), color.red,
                color.green, color.blue, color.alpha);
  // Lines align within the area (or the box, when it is narrower); the block
  // is centred vertically.
  const double width = std::min(area.width, block.box.width);
  double y = std::max(0.0, (area.height - broken.size.height) / 2);
  for (const BrokenLine& line : broken.lines) {
    double x = 0;
    if (block.alignment == TextAlignment::Center)
      x = (width - line.width) / 2;
    else if (block.alignment == TextAlignment::Right)
      x = width - line.width;
    tl_text_line(line.text.data(), static_cast<int>(line.text.size()), x, y + m.ascent);
    y += m.lineHeight;
  }
  tl_text_end(bitmap.rgba.data());
  return bitmap;
}

void CanvasText::warmUp() {
  measureRun("Aa \u65b0", Font::systemFontOfSize(16));
  measureRun("Aa \u65b0", Font::boldSystemFontOfSize(16));
}

}  // namespace kit::web
