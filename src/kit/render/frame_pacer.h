#pragma once

#include <cstdint>

namespace kit {

// Keeps the main loop at the display's refresh rate when presenting does not
// wait for the vertical blank (software renderers, offscreen and many X11
// setups): after each frame it says how long to sleep. When presenting does
// wait, frames already take a whole period and the answer is zero. Times are
// monotonic nanoseconds.
class FramePacer {
 public:
  static constexpr int64_t kDefaultPeriod = 16'666'667;  // 60 Hz

  explicit FramePacer(int64_t periodNanos = kDefaultPeriod) { setPeriod(periodNanos); }

  // A refresh rate of zero or less (unknown) keeps 60 Hz.
  void setRefreshRate(int hertz);
  void setPeriod(int64_t periodNanos);
  int64_t period() const { return period_; }

  // Nanoseconds to wait before the frame after the one that began at
  // `frameStart`, given the time `now` after it was presented. A frame that
  // overran is followed at once, and the schedule restarts from it, so a
  // stall is never paid back with a burst of short frames.
  int64_t sleepAfterFrame(int64_t frameStart, int64_t now) const;

 private:
  int64_t period_ = kDefaultPeriod;
};

}  // namespace kit
