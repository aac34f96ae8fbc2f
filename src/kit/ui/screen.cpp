#include "kit/ui/screen.h"

#include <cmath>
#include <utility>

namespace kit {

namespace {

bool isUsable(double value) {
  return std::isfinite(value) && value > 0;
}

// Not an owner: the installed screen's owner (the application) outlives
// its installation.
Screen* gInstalled = nullptr;

}  // namespace

Screen::~Screen() {
  if (gInstalled == this)
    gInstalled = nullptr;
}

Screen& Screen::main() {
  static Screen defaults;
  return gInstalled ? *gInstalled : defaults;
}

Screen* Screen::setMain(Screen* screen) {
  return std::exchange(gInstalled, screen);
}

void Screen::setBounds(Size bounds) {
  if (isUsable(bounds.width) && isUsable(bounds.height))
    bounds_ = bounds;
}

void Screen::setScale(double scale) {
  if (isUsable(scale))
    scale_ = scale;
}

}  // namespace kit
