#include "kit/render/panel_geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kit {

namespace {

PanelBitmap transparent(int width, int height, Point origin) {
  PanelBitmap out;
  out.width = width;
  out.height = height;
  out.origin = origin;
  out.rgba.assign(static_cast<size_t>(width) * height * 4, 0);
  return out;
}

}  // namespace

PanelBitmap PanelGeometry::blank() const {
  return transparent(width, height, panel.origin);
}

PanelBitmap SpinnerGeometry::blank() const {
  return transparent(side, side, {});
}

std::optional<PanelGeometry> panelGeometry(const PanelStyle& style, double scale,
                                           double largestSide) {
  if (!(scale > 0) || !std::isfinite(scale))
    return std::nullopt;
  const double w = style.size.width * scale, h = style.size.height * scale;
  if (!(w >= 1) || !(h >= 1) || w > largestSide || h > largestSide)
    return std::nullopt;
  PanelGeometry g;
  g.shadow = style.hasShadow();
  g.shadowBlur = g.shadow ? std::ceil(std::max(0.0, style.shadowRadius) * scale) : 0;
  const double dx = g.shadow ? style.shadowOffset.width * scale : 0;
  const double dy = g.shadow ? style.shadowOffset.height * scale : 0;
  // Room for the shadow on each side.
  const double left = g.shadow ? std::max(0.0, 2 * g.shadowBlur - dx) : 0;
  const double top = g.shadow ? std::max(0.0, 2 * g.shadowBlur - dy) : 0;
  const double right = g.shadow ? std::max(0.0, 2 * g.shadowBlur + dx) : 0;
  const double bottom = g.shadow ? std::max(0.0, 2 * g.shadowBlur + dy) : 0;
  const double width = std::ceil(left + w + right), height = std::ceil(top + h + bottom);
  if (width > largestSide || height > largestSide)
    return std::nullopt;
  g.width = static_cast<int>(width);
  g.height = static_cast<int>(height);
  g.panel = {{std::ceil(left), std::ceil(top)}, {w, h}};
  g.cornerRadius = std::min(std::max(0.0, style.cornerRadius) * scale, std::min(w, h) / 2);
  g.shadowOffset = {dx, dy};
  const Color c = style.shadowColor;
  g.shadowAlpha = g.shadow ? std::clamp(c.alpha * style.shadowOpacity, 0.0, 1.0) : 0;
  return g;
}

std::optional<SpinnerGeometry> spinnerGeometry(double side, double scale, double colorAlpha,
                                               int spokes, double largestSide) {
  if (!(scale > 0) || !(side > 0) || spokes <= 0)
    return std::nullopt;
  const double px = side * scale;
  if (!(px >= 1) || px > largestSide)
    return std::nullopt;
  SpinnerGeometry g;
  g.side = static_cast<int>(std::ceil(px));
  g.lineWidth = px * 0.09;
  g.inner = px * 0.22;
  g.outer = px * 0.44;
  // The brightest spoke points up, the others fade anticlockwise behind it.
  g.spokes.reserve(static_cast<size_t>(spokes));
  for (int i = 0; i < spokes; ++i) {
    const double fade = 1.0 - 0.8 * i / spokes;
    g.spokes.push_back({-2 * std::numbers::pi * i / spokes, colorAlpha * fade});
  }
  return g;
}

}  // namespace kit
