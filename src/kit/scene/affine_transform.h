#pragma once

#include <cmath>

#include "kit/foundation/geometry.h"

namespace kit {

// A 2D affine map: x' = a·x + c·y + tx,
// y' = b·x + d·y + ty. Nodes combine a translation and a rotation; the draw
// list and the view mapping also carry a scale and a y flip.
struct AffineTransform {
  double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

  static AffineTransform identity() { return {}; }
  static AffineTransform translation(double x, double y) { return {1, 0, 0, 1, x, y}; }
  static AffineTransform scale(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }
  // Counter-clockwise by `radians` in a y-up system.
  static AffineTransform rotation(double radians) {
    const double cs = std::cos(radians), sn = std::sin(radians);
    return {cs, sn, -sn, cs, 0, 0};
  }

  Point apply(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }

  // The map that applies `inner` first, then this one.
  AffineTransform concatenating(const AffineTransform& inner) const {
    return {a * inner.a + c * inner.b,        b * inner.a + d * inner.b,
            a * inner.c + c * inner.d,        b * inner.c + d * inner.d,
            a * inner.tx + c * inner.ty + tx, b * inner.tx + d * inner.ty + ty};
  }

  // The inverse map; a singular transform inverts to the identity rather
  // than to infinities.
  AffineTransform inverted() const {
    const double det = a * d - b * c;
    if (det == 0 || !std::isfinite(det))
      return {};
    return {d / det, -b / det, -c / det, a / det, (c * ty - d * tx) / det, (b * tx - a * ty) / det};
  }

  // Bounding box of a rectangle after the map.
  Rect applyToRect(const Rect& r) const;

  friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

inline Rect AffineTransform::applyToRect(const Rect& r) const {
  const Point p[4] = {apply({r.minX(), r.minY()}), apply({r.maxX(), r.minY()}),
                      apply({r.minX(), r.maxY()}), apply({r.maxX(), r.maxY()})};
  double x0 = p[0].x, x1 = p[0].x, y0 = p[0].y, y1 = p[0].y;
  for (const Point& q : p) {
    x0 = std::min(x0, q.x);
    x1 = std::max(x1, q.x);
    y0 = std::min(y0, q.y);
    y1 = std::max(y1, q.y);
  }
  return {{x0, y0}, {x1 - x0, y1 - y0}};
}

}  // namespace kit
