#include "kit/render/viewport.h"

#include <algorithm>
#include <cmath>

namespace kit {
namespace {

bool usable(double v) {
  return std::isfinite(v) && v > 0;
}

}  // namespace

Viewport Viewport::fit(Size content, Size windowSize, double density) {
  Viewport v;
  v.content = content;
  v.density = usable(density) ? density : 1;
  if (!usable(content.width) || !usable(content.height) || !usable(windowSize.width) ||
      !usable(windowSize.height)) {
    return v;
  }
  v.scale = std::min(windowSize.width / content.width, windowSize.height / content.height);
  v.offset = {(windowSize.width - content.width * v.scale) * 0.5,
              (windowSize.height - content.height * v.scale) * 0.5};
  return v;
}

Point Viewport::pointFromWindow(Point windowPoint) const {
  return {(windowPoint.x - offset.x) / scale, (windowPoint.y - offset.y) / scale};
}

AffineTransform Viewport::pointsToPixels() const {
  const double s = pixelsPerPoint();
  return {s, 0, 0, s, offset.x * density, offset.y * density};
}

Rect Viewport::contentPixels() const {
  return pointsToPixels().applyToRect({{0, 0}, content});
}

double openingScale(Size content, Size usableArea, double margin) {
  constexpr double kStep = 0.25;
  if (!usable(content.width) || !usable(content.height))
    return 1;
  const double room = std::min((usableArea.width - 2 * margin) / content.width,
                               (usableArea.height - 2 * margin) / content.height);
  if (!std::isfinite(room) || room < kStep)
    return kStep;
  return std::floor(room / kStep) * kStep;
}

}  // namespace kit
