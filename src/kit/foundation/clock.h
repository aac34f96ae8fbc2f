#pragma once

#include <cstdint>

namespace kit {

// Time as the game sees it: wall time in whole seconds since 1970 (what
// time() gives) for stored dates, and a monotonic count of nanoseconds for
// frames and timers. Shared by reference; the owner outlives every user.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual int64_t now() const = 0;
  virtual int64_t monotonicNanos() const = 0;
};

class SystemClock final : public Clock {
 public:
  int64_t now() const override;
  int64_t monotonicNanos() const override;
};

// A clock that moves only when told. The wall time advances with the
// monotonic time from the last setNow(), in whole seconds.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(int64_t wallSeconds = 1'700'000'000) : wallBase_(wallSeconds) {}

  int64_t now() const override;
  int64_t monotonicNanos() const override { return mono_; }

  void setNow(int64_t wallSeconds);
  void advance(int64_t nanos) { mono_ += nanos; }
  void advanceSeconds(double seconds);

 private:
  int64_t wallBase_;
  int64_t monoAtWallBase_ = 0;
  int64_t mono_ = 0;
};

inline constexpr int64_t kNanosPerSecond = 1'000'000'000;

}  // namespace kit
