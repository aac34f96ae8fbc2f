#include "kit/ui/activity_indicator_view.h"

#include <numbers>

#include "kit/ui/animator.h"

namespace kit {
namespace {

Size sizeOf(ActivityIndicatorViewStyle style) {
  return style == ActivityIndicatorViewStyle::WhiteLarge ? Size{37, 37} : Size{20, 20};
}

}  // namespace

ActivityIndicatorView::ActivityIndicatorView(ActivityIndicatorViewStyle style)
    : View(Rect{{0, 0}, sizeOf(style)}), style_(style) {
  setUserInteractionEnabled(false);
  setHidden(true);
}

Color ActivityIndicatorView::color() const {
  return style_ == ActivityIndicatorViewStyle::Gray ? Color{0.5, 0.5, 0.5, 1} : Color::white();
}

void ActivityIndicatorView::startAnimating() {
  if (animating_)
    return;
  animating_ = true;
  const Animator* animator = Animator::current();
  startedAt_ = animator ? animator->now() : 0;
  if (hidesWhenStopped_)
    setHidden(false);
}

void ActivityIndicatorView::stopAnimating() {
  if (!animating_)
    return;
  animating_ = false;
  if (hidesWhenStopped_)
    setHidden(true);
}

void ActivityIndicatorView::setHidesWhenStopped(bool hides) {
  hidesWhenStopped_ = hides;
  if (!animating_)
    setHidden(hides);
}

double ActivityIndicatorView::spinAngle(int64_t nanos) const {
  if (!animating_ || nanos <= startedAt_)
    return 0;
  const int64_t step = (nanos - startedAt_) * kSpokes / kNanosPerSecond % kSpokes;
  return static_cast<double>(step) * 2 * std::numbers::pi / kSpokes;
}

std::string ActivityIndicatorView::describe() const {
  return animating_ ? "animating" : "stopped";
}

}  // namespace kit
