#include "kit/ui/screen.h"

#include <cmath>

namespace kit {

namespace {

bool isUsable(double value) {
  return std::isfinite(value) && value > 0;
}

}  // namespace

Screen& Screen::main() {
  static Screen screen;
  return screen;
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
