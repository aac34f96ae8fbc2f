#pragma once

#include "kit/foundation/geometry.h"

namespace kit {

// The device's main screen: its bounds in points and its scale (pixels per
// point). One per process; the host sets it at start-up from the chosen device
// profile and tests set it in their fixtures. Main thread only.
class Screen {
 public:
  static constexpr Size kDefaultBounds{320, 568};
  static constexpr double kDefaultScale = 2.0;

  static Screen& main();

  Size bounds() const { return bounds_; }
  double scale() const { return scale_; }

  // Values that are not finite and positive are ignored, so a bad profile can
  // never leave the screen without a usable scale.
  void setBounds(Size bounds);
  void setScale(double scale);

 private:
  Size bounds_ = kDefaultBounds;
  double scale_ = kDefaultScale;
};

}  // namespace kit
