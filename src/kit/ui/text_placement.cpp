#include "kit/ui/text_placement.h"

#include <algorithm>
#include <cmath>

namespace kit {
namespace {

int pixels(double points, double scale, int largestSide) {
  const double p = std::ceil(points * scale - 1e-6);
  return p > 0 ? static_cast<int>(std::min<double>(p, largestSide)) : 0;
}

}  // namespace

TextFrame textFrame(Size area, double scale, Size textSize, int largestSide) {
  TextFrame frame;
  frame.area = area.width > 0 && area.height > 0 ? area : textSize;
  frame.scale = scale > 0 && std::isfinite(scale) ? scale : 1;
  const int width = pixels(frame.area.width, frame.scale, largestSide);
  const int height = pixels(frame.area.height, frame.scale, largestSide);
  if (width == 0 || height == 0)
    return frame;
  frame.bitmap.width = width;
  frame.bitmap.height = height;
  frame.bitmap.rgba.assign(static_cast<size_t>(width) * height * 4, 0);
  return frame;
}

double alignedOffset(TextAlignment alignment, double room) {
  if (alignment == TextAlignment::Center)
    return room / 2;
  if (alignment == TextAlignment::Right)
    return room;
  return 0;
}

double blockTop(Size area, Size textSize) {
  return std::max(0.0, (area.height - textSize.height) / 2);
}

}  // namespace kit
