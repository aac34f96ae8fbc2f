#pragma once

#include <optional>

namespace kit {

// How drawn pixels combine with those already in a context, numbered as the
// platform numbers them (so a number read from data or a command line means the
// same mode everywhere). Every mode but PlusDarker has an exact compositing
// counterpart; PlusDarker (source + destination - 1, floored at 0) is drawn as
// Multiply, the closest darkening mode: both leave the destination unchanged
// under white, give black under black, and only darken in between.
enum class BlendMode {
  Normal = 0,
  Multiply = 1,
  Screen = 2,
  Overlay = 3,
  Darken = 4,
  Lighten = 5,
  ColorDodge = 6,
  ColorBurn = 7,
  SoftLight = 8,
  HardLight = 9,
  Difference = 10,
  Exclusion = 11,
  Hue = 12,
  Saturation = 13,
  Color = 14,
  Luminosity = 15,
  Clear = 16,
  Copy = 17,
  SourceIn = 18,
  SourceOut = 19,
  SourceAtop = 20,
  DestinationOver = 21,
  DestinationIn = 22,
  DestinationOut = 23,
  DestinationAtop = 24,
  Xor = 25,
  PlusDarker = 26,
  PlusLighter = 27,
};

// The mode with the platform's number, or nothing for a number outside 0..27.
constexpr std::optional<BlendMode> blendModeFromNumber(long number) {
  if (number < 0 || number > static_cast<long>(BlendMode::PlusLighter))
    return std::nullopt;
  return static_cast<BlendMode>(number);
}

}  // namespace kit
