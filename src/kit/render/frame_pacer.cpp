#include "kit/render/frame_pacer.h"

namespace kit {
namespace {

// Below this a wait is not worth a sleep: the scheduler would overshoot it.
constexpr int64_t kShortestSleep = 500'000;

}  // namespace

void FramePacer::setRefreshRate(int hertz) {
  setPeriod(hertz > 0 ? 1'000'000'000 / hertz : kDefaultPeriod);
}

void FramePacer::setPeriod(int64_t periodNanos) {
  period_ = periodNanos > 0 ? periodNanos : kDefaultPeriod;
}

int64_t FramePacer::sleepAfterFrame(int64_t now, int64_t presentNanos) {
  if (presentNanos >= period_ / 4) {
    due_ = 0;  // the display holds presents to its refresh
    return 0;
  }
  if (due_ == 0)
    due_ = now;
  due_ += period_;
  if (due_ < now)
    due_ = now;  // overran: go on at once, on a schedule from here
  const int64_t left = due_ - now;
  return left >= kShortestSleep ? left : 0;
}

}  // namespace kit
