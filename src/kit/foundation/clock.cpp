#include "kit/foundation/clock.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace kit {

int64_t SystemClock::now() const {
  return static_cast<int64_t>(std::time(nullptr));
}

int64_t SystemClock::monotonicNanos() const {
  using namespace std::chrono;
  return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

int64_t ManualClock::now() const {
  return wallBase_ + (mono_ - monoAtWallBase_) / kNanosPerSecond;
}

void ManualClock::setNow(int64_t wallSeconds) {
  wallBase_ = wallSeconds;
  monoAtWallBase_ = mono_;
}

void ManualClock::advanceSeconds(double seconds) {
  advance(static_cast<int64_t>(std::llround(seconds * kNanosPerSecond)));
}

}  // namespace kit
