#pragma once

#include "kit/foundation/geometry.h"

namespace kit {

// The pixels an image context (or a blank image) of a size in points holds,
// the same on every backend: a scale that is not positive or not finite is
// the main screen's; a size that is negative or not finite is empty; each side
// is ceil(points × scale), less a rounding error's slack so 100 × 1.1 stays
// 110; a side beyond `largestSide` (the backend's limit) leaves no pixels.
struct ImageExtent {
  Size size;  // points
  double scale = 1;
  int width = 0;  // both zero when either is
  int height = 0;
};

ImageExtent imageExtent(Size size, double scale, double largestSide);

}  // namespace kit
