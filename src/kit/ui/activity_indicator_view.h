#pragma once

#include <cstdint>

#include "kit/ui/view.h"

namespace kit {

// The platform's styles: white large is 37 x 37, the others 20 x 20.
enum class ActivityIndicatorViewStyle { WhiteLarge = 0, White = 1, Gray = 2 };

// A spinner of kSpokes spokes whose brightest spoke steps round once a second
// while animating. It keeps only its start time; the renderer asks for the
// angle at the frame's time. Hidden while stopped when hidesWhenStopped (the
// default), so a new indicator is hidden until startAnimating().
class ActivityIndicatorView : public View {
 public:
  static constexpr int kSpokes = 12;

  explicit ActivityIndicatorView(
      ActivityIndicatorViewStyle style = ActivityIndicatorViewStyle::WhiteLarge);
  std::string className() const override { return "ActivityIndicatorView"; }

  ActivityIndicatorViewStyle style() const { return style_; }
  // White for the white styles, grey for Gray.
  Color color() const;

  // Starts at the current animator's time (0 without one).
  void startAnimating();
  void stopAnimating();
  bool isAnimating() const { return animating_; }
  bool hidesWhenStopped() const { return hidesWhenStopped_; }
  void setHidesWhenStopped(bool hides);

  // Clockwise angle in radians, in whole spoke steps, of the brightest spoke
  // at monotonic time `nanos` (0 when stopped).
  double spinAngle(int64_t nanos) const;

 protected:
  std::string describe() const override;

 private:
  ActivityIndicatorViewStyle style_;
  bool animating_ = false;
  bool hidesWhenStopped_ = true;
  int64_t startedAt_ = 0;
};

}  // namespace kit
