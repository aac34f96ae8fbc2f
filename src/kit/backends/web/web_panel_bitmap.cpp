// kit::rasterizePanel and rasterizeSpinner for the browser build: a canvas
// draws the rounded rectangle (its shadow through shadowBlur) and the spokes.
// Without a page (node) the bitmaps keep their sizes, transparent.
#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>

#include "kit/backends/web/browser_canvas.h"
#include "kit/render/panel_bitmap.h"

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
    const r = Math.min(radius, w / 2, h / 2);
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

EM_JS(void, tl_spinner_draw, (uint8_t* out, int side, double px, double r, double g, double b,
                              double a, int spokes), {
  const canvas = document.createElement('canvas');
  canvas.width = side;
  canvas.height = side;
  const ctx = canvas.getContext('2d');
  ctx.translate(side / 2, side / 2);
  ctx.lineCap = 'round';
  ctx.lineWidth = px * 0.09;
  for (let i = 0; i < spokes; ++i) {
    const fade = 1 - 0.8 * i / spokes;
    ctx.save();
    ctx.rotate(-2 * Math.PI * i / spokes);
    ctx.beginPath();
    ctx.moveTo(0, -px * 0.22);
    ctx.lineTo(0, -px * 0.44);
    ctx.strokeStyle = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                      Math.round(b * 255) + ',' + a * fade + ')';
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

PanelBitmap rasterizePanel(const PanelStyle& style, double scale) {
  PanelBitmap out;
  if (!(scale > 0) || !std::isfinite(scale))
    return out;
  const double w = style.size.width * scale, h = style.size.height * scale;
  if (!(w >= 1) || !(h >= 1) || w > kLargestSide || h > kLargestSide)
    return out;
  const bool shadow = style.hasShadow();
  const double blur = shadow ? std::ceil(std::max(0.0, style.shadowRadius) * scale) : 0;
  const double dx = shadow ? style.shadowOffset.width * scale : 0;
  const double dy = shadow ? style.shadowOffset.height * scale : 0;
  // Room for the shadow on each side.
  const double left = shadow ? std::max(0.0, 2 * blur - dx) : 0;
  const double top = shadow ? std::max(0.0, 2 * blur - dy) : 0;
  const double right = shadow ? std::max(0.0, 2 * blur + dx) : 0;
  const double bottom = shadow ? std::max(0.0, 2 * blur + dy) : 0;
  out.width = static_cast<int>(std::ceil(left + w + right));
  out.height = static_cast<int>(std::ceil(top + h + bottom));
  if (out.width > kLargestSide || out.height > kLargestSide)
    return {};
  out.origin = {std::ceil(left), std::ceil(top)};
  out.rgba.assign(static_cast<size_t>(out.width) * out.height * 4, 0);
  if (!web::hasCanvas())
    return out;
  const Color s = style.shadowColor;
  const double shadowAlpha = shadow ? std::clamp(s.alpha * style.shadowOpacity, 0.0, 1.0) : 0;
  tl_panel_draw(out.rgba.data(), out.width, out.height, out.origin.x, out.origin.y, w, h,
                std::max(0.0, style.cornerRadius) * scale, style.fill.red, style.fill.green,
                style.fill.blue, style.fill.alpha, s.red, s.green, s.blue, shadowAlpha, blur, dx,
                dy);
  return out;
}

PanelBitmap rasterizeSpinner(double side, double scale, Color color, int spokes) {
  PanelBitmap out;
  if (!(scale > 0) || !(side > 0) || spokes <= 0)
    return out;
  const double px = side * scale;
  if (!(px >= 1) || px > kLargestSide)
    return out;
  out.width = out.height = static_cast<int>(std::ceil(px));
  out.rgba.assign(static_cast<size_t>(out.width) * out.height * 4, 0);
  if (web::hasCanvas())
    tl_spinner_draw(out.rgba.data(), out.width, px, color.red, color.green, color.blue, color.alpha,
                    spokes);
  return out;
}

void unpremultiply(const uint8_t* argb, int width, int height, int stride, uint8_t* rgbaOut) {
  for (int y = 0; y < height; ++y) {
    const auto* row = reinterpret_cast<const uint32_t*>(argb + static_cast<ptrdiff_t>(y) * stride);
    for (int x = 0; x < width; ++x) {
      const uint32_t p = row[x];
      const uint32_t a = p >> 24;
      uint8_t* out = rgbaOut + (static_cast<size_t>(y) * width + x) * 4;
      for (int c = 0; c < 3; ++c) {
        const uint32_t v = (p >> (16 - 8 * c)) & 0xff;
        out[c] = a == 0 ? 0 : static_cast<uint8_t>(std::min<uint32_t>(255, (v * 255 + a / 2) / a));
      }
      out[3] = static_cast<uint8_t>(a);
    }
  }
}

}  // namespace kit
