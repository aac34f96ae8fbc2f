#pragma once

#include "kit/foundation/geometry.h"

namespace kit {

// The device's main screen: its bounds in points and its scale (pixels per
// point). The application owns its screen and installs it as the main screen
// while it lives (setting it from the chosen device profile); with none
// installed, main() is a screen of the default values, which tests may set in
// their fixtures. Main thread only.
class Screen {
 public:
  static constexpr Size kDefaultBounds{320, 568};
  static constexpr double kDefaultScale = 2.0;

  Screen() = default;
  // Uninstalls itself if it is the main screen.
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  static Screen& main();
  // Installs `screen` (borrowed; nullptr uninstalls) as the main screen and
  // returns the one installed before.
  static Screen* setMain(Screen* screen);

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
