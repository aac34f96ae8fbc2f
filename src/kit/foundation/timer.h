#pragma once

#include <cstdint>
#include <functional>
#include <limits>

namespace kit {

class RunLoop;

// A timer scheduled on a run loop, as the platform's repeating timer: it keeps
// a fire date on the monotonic clock. Setting the date to kDistantPast makes
// it fire at the next run-loop pass and then every interval; kDistantFuture
// pauses it. The run loop shares ownership; invalidate() takes it off.
class Timer {
 public:
  static constexpr int64_t kDistantPast = std::numeric_limits<int64_t>::min();
  static constexpr int64_t kDistantFuture = std::numeric_limits<int64_t>::max();

  Timer(int64_t intervalNanos, std::function<void()> target, bool repeats, int64_t fireDate);
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  void setFireDate(int64_t monotonicNanos) { fireDate_ = monotonicNanos; }
  int64_t fireDate() const { return fireDate_; }
  int64_t intervalNanos() const { return interval_; }
  bool repeats() const { return repeats_; }

  // Stops the timer for good; the run loop drops it at its next pass.
  void invalidate();
  bool isValid() const { return valid_; }

 private:
  friend class RunLoop;
  // Fires once if due at `now` and moves the fire date past `now`, skipping
  // missed ticks. Returns whether it fired.
  bool fireIfDue(int64_t now);

  int64_t interval_;
  std::function<void()> target_;
  bool repeats_;
  int64_t fireDate_;
  bool valid_ = true;
};

}  // namespace kit
