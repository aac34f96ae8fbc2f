#pragma once

namespace kit {

// Options of a view animation, with the platform's bit values. The curve is a
// two-bit field: at most one Curve* option applies; none means ease-in-out.
enum class AnimationOptions : unsigned {
  None = 0,
  BeginFromCurrentState = 1u << 2,
  CurveEaseInOut = 0u << 16,
  CurveEaseIn = 1u << 16,
  CurveEaseOut = 2u << 16,
  CurveLinear = 3u << 16,
};

constexpr AnimationOptions operator|(AnimationOptions a, AnimationOptions b) {
  return static_cast<AnimationOptions>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

constexpr bool hasOption(AnimationOptions options, AnimationOptions flag) {
  return (static_cast<unsigned>(options) & static_cast<unsigned>(flag)) ==
         static_cast<unsigned>(flag);
}

enum class AnimationCurve { EaseInOut, EaseIn, EaseOut, Linear };

constexpr AnimationCurve curveOf(AnimationOptions options) {
  return static_cast<AnimationCurve>((static_cast<unsigned>(options) >> 16) & 3u);
}

// The eased fraction for a linear time fraction t in [0, 1], on the platform's
// cubic timing curves (ease-in 0.42,0 1,1; ease-out 0,0 0.58,1; ease-in-out
// 0.42,0 0.58,1). Values outside [0, 1] are clamped.
double easedProgress(AnimationCurve curve, double t);

}  // namespace kit
