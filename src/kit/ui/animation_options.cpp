#include <cmath>

#include "kit/ui/animation_options.h"

namespace kit {
namespace {

// A cubic timing curve from (0,0) to (1,1) with control points (x1,y1) and
// (x2,y2): solve x(s) = t for s, then return y(s).
double cubicBezier(double x1, double y1, double x2, double y2, double t) {
  auto coordinate = [](double p1, double p2, double s) {
    const double u = 1 - s;
    return 3 * u * u * s * p1 + 3 * u * s * s * p2 + s * s * s;
  };
  auto slope = [](double p1, double p2, double s) {
    const double u = 1 - s;
    return 3 * u * u * p1 + 6 * u * s * (p2 - p1) + 3 * s * s * (1 - p2);
  };
  double s = t;
  for (int i = 0; i < 8; ++i) {
    const double error = coordinate(x1, x2, s) - t;
    if (std::fabs(error) < 1e-9)
      return coordinate(y1, y2, s);
    const double d = slope(x1, x2, s);
    if (std::fabs(d) < 1e-6)
      break;
    s -= error / d;
  }
  // Newton stalled (flat ends of the curve): bisect, x is monotonic.
  double lo = 0, hi = 1;
  s = t;
  for (int i = 0; i < 60; ++i) {
    const double x = coordinate(x1, x2, s);
    if (std::fabs(x - t) < 1e-9)
      break;
    (x < t ? lo : hi) = s;
    s = (lo + hi) / 2;
  }
  return coordinate(y1, y2, s);
}

}  // namespace

double easedProgress(AnimationCurve curve, double t) {
  if (!(t > 0))
    return 0;
  if (t >= 1)
    return 1;
  switch (curve) {
    case AnimationCurve::EaseIn:
      return cubicBezier(0.42, 0, 1, 1, t);
    case AnimationCurve::EaseOut:
      return cubicBezier(0, 0, 0.58, 1, t);
    case AnimationCurve::EaseInOut:
      return cubicBezier(0.42, 0, 0.58, 1, t);
    case AnimationCurve::Linear:
      break;
  }
  return t;
}

}  // namespace kit
