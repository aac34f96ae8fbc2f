#pragma once

namespace kit {

// A straight (not premultiplied) RGBA colour, components 0..1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static constexpr Color clear() { return {0, 0, 0, 0}; }
  static constexpr Color black() { return {0, 0, 0, 1}; }
  static constexpr Color white() { return {1, 1, 1, 1}; }
  constexpr Color withAlpha(double a) const { return {red, green, blue, a}; }
  friend bool operator==(const Color&, const Color&) = default;
};

}  // namespace kit
