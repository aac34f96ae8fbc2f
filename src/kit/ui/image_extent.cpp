#include "kit/ui/image_extent.h"

#include <cmath>

#include "kit/ui/screen.h"

namespace kit {
namespace {

// Tolerance for sizes like 100 × 1.1 that land a rounding error above a whole
// number of pixels and must not gain an extra one.
constexpr double kPixelSlack = 1e-6;

int pixelExtent(double points, double scale, double largestSide) {
  const double pixels = std::ceil(points * scale - kPixelSlack);
  if (!(pixels > 0) || pixels > largestSide)
    return 0;  // also NaN
  return static_cast<int>(pixels);
}

}  // namespace

ImageExtent imageExtent(Size size, double scale, double largestSide) {
  ImageExtent out;
  out.scale = std::isfinite(scale) && scale > 0 ? scale : Screen::main().scale();
  if (std::isfinite(size.width) && size.width >= 0 && std::isfinite(size.height) &&
      size.height >= 0)
    out.size = size;
  out.width = pixelExtent(out.size.width, out.scale, largestSide);
  out.height = pixelExtent(out.size.height, out.scale, largestSide);
  if (out.width == 0 || out.height == 0)
    out.width = out.height = 0;
  return out;
}

}  // namespace kit
