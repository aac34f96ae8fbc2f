#include "kit/foundation/timer.h"

#include <utility>

#include "kit/foundation/assert.h"

namespace kit {

Timer::Timer(int64_t intervalNanos, std::function<void()> target, bool repeats, int64_t fireDate)
    : interval_(intervalNanos > 0 ? intervalNanos : 1),
      target_(std::move(target)),
      repeats_(repeats),
      fireDate_(fireDate) {
  // A one-shot may fire at the next pass; a repeating timer without an
  // interval would fire on every pass for ever.
  KIT_ASSERT(!repeats || intervalNanos > 0, "a repeating timer needs a positive interval");
}

void Timer::invalidate() {
  valid_ = false;
  target_ = nullptr;
}

bool Timer::fireIfDue(int64_t now) {
  if (!valid_ || fireDate_ > now)
    return false;
  if (!repeats_) {
    valid_ = false;
  } else if (fireDate_ == kDistantPast) {
    fireDate_ = now + interval_;
  } else {
    // Late ticks are skipped: the next date stays on the original grid but
    // lands after `now`, so a stalled loop never fires a burst.
    int64_t missed = (now - fireDate_) / interval_;
    fireDate_ += (missed + 1) * interval_;
  }
  // Keep the target alive through the call even if it invalidates us.
  auto target = target_;
  if (!repeats_)
    target_ = nullptr;
  if (target)
    target();
  return true;
}

}  // namespace kit
