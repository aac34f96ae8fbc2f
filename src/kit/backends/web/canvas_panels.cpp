// WebImageSystem's panels and spinners: a canvas
// draws the rounded rectangle (its shadow through shadowBlur) and the spokes.
// Without a page (node) the bitmaps keep their sizes, transparent.
#include <emscripten/emscripten.h>

#include <optional>
#include <vector>

#include "kit/backends/web/browser_canvas.h"
#include "kit/backends/web/web_image_system.h"
#include "kit/render/panel_geometry.h"

// clang-format off
EM_JS(void, tl_panel_draw, (uint8_t* out, int width, int height, double x, double y, double w,
                            double h, double radius, double fr, double fg, double fb, double fa,
                            double sr, double sg, double sb, double sa, double blur, double dx,
                            double dy), {
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const ctx = canvas.getContext('2d');
  const rgba = (r, g, b, a) => 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                               Math.round(b * 255) + ',' + a + ')';
  const shape = (px, py) => {
    const r = radius;
    ctx.beginPath();
    ctx.moveTo(px + r, py);
    ctx.arcTo(px + w, py, px + w, py + h, r);
    ctx.arcTo(px + w, py + h, px, py + h, r);
    ctx.arcTo(px, py + h, px, py, r);
    ctx.arcTo(px, py, px + w, py, r);
    ctx.closePath();
  };
  if (sa > 0) {
    // The shadow alone: the shape drawn far off the canvas, its shadow
    // thrown back onto it.
    ctx.save();
    ctx.shadowColor = rgba(sr, sg, sb, sa);
    ctx.shadowBlur = blur;
    ctx.shadowOffsetX = dx + 10 * width;
    ctx.shadowOffsetY = dy;
    shape(x - 10 * width, y);
    ctx.fillStyle = 'black';
    ctx.fill();
    ctx.restore();
  }
  if (fa > 0) {
    shape(x, y);
    ctx.fillStyle = rgba(fr, fg, fb, fa);
    ctx.fill();
  }
  HEAPU8.set(ctx.getImageData(0, 0, width, height).data, out);
});

EM_JS(void, tl_spinner_draw, (uint8_t* out, int side, double lineWidth, double inner,
                              double outer, double r, double g, double b, const double* spokes,
                              int count), {
  const canvas = document.createElement('canvas');
  canvas.width = side;
  canvas.height = side;
  const ctx = canvas.getContext('2d');
  ctx.translate(side / 2, side / 2);
  ctx.lineCap = 'round';
  ctx.lineWidth = lineWidth;
  for (let i = 0; i < count; ++i) {
    const angle = HEAPF64[(spokes >> 3) + 2 * i], alpha = HEAPF64[(spokes >> 3) + 2 * i + 1];
    ctx.save();
    ctx.rotate(angle);
    ctx.beginPath();
    ctx.moveTo(0, -inner);
    ctx.lineTo(0, -outer);
    ctx.strokeStyle = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                      Math.round(b * 255) + ',' + alpha + ')';
    ctx.stroke();
    ctx.restore();
  }
  HEAPU8.set(ctx.getImageData(0, 0, side, side).data, out);
});
// clang-format on

namespace kit {
namespace {

constexpr double kLargestSide = 8192;

}  // namespace

PanelBitmap WebImageSystem::rasterizePanel(const PanelStyle& style, double scale) {
  const std::optional<PanelGeometry> g = panelGeometry(style, scale, kLargestSide);
  if (!g)
    return {};
  PanelBitmap out = g->blank();
  if (!web::hasCanvas())
    return out;
  const Color s = style.shadowColor;
  tl_panel_draw(out.rgba.data(), out.width, out.height, out.origin.x, out.origin.y,
                g->panel.size.width, g->panel.size.height, g->cornerRadius, style.fill.red,
                style.fill.green, style.fill.blue, style.fill.alpha, s.red, s.green, s.blue,
                g->shadowAlpha, g->shadowBlur, g->shadowOffset.width, g->shadowOffset.height);
  return out;
}

PanelBitmap WebImageSystem::rasterizeSpinner(double side, double scale, Color color, int spokes) {
  const std::optional<SpinnerGeometry> g =
      spinnerGeometry(side, scale, color.alpha, spokes, kLargestSide);
  if (!g)
    return {};
  PanelBitmap out = g->blank();
  if (!web::hasCanvas())
    return out;
  std::vector<double> angleAlpha;
  angleAlpha.reserve(g->spokes.size() * 2);
  for (const SpinnerSpoke& spoke : g->spokes) {
    angleAlpha.push_back(spoke.angle);
    angleAlpha.push_back(spoke.alpha);
  }
  tl_spinner_draw(out.rgba.data(), out.width, g->lineWidth, g->inner, g->outer, color.red,
                  color.green, color.blue, angleAlpha.data(), static_cast<int>(g->spokes.size()));
  return out;
}

}  // namespace kit
