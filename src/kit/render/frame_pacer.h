#pragma once

#include <cstdint>

namespace kit {

// Keeps the main loop at the display's refresh rate when presenting does not
// wait for the vertical blank (software renderers, offscreen and many X11
// setups): after each frame it says how long to sleep. Presents are due on a
// fixed schedule, so a sleep that overshoots is made up by the next one and
// the loop holds the rate. A present that itself waited a good part of a
// period means the display paces the loop: then nothing is added. A frame
// that overruns restarts the schedule from its end: a stall is never paid
// back with a burst of short frames. Times are monotonic nanoseconds.
class FramePacer {
 public:
  static constexpr int64_t kDefaultPeriod = 16'666'667;  // 60 Hz

  explicit FramePacer(int64_t periodNanos = kDefaultPeriod) { setPeriod(periodNanos); }

  // A refresh rate of zero or less (unknown) keeps 60 Hz.
  void setRefreshRate(int hertz);
  void setPeriod(int64_t periodNanos);
  int64_t period() const { return period_; }

  // Nanoseconds to wait, at `now`, just after a frame was presented;
  // `presentNanos` is how long presenting took.
  int64_t sleepAfterFrame(int64_t now, int64_t presentNanos);

 private:
  int64_t period_ = kDefaultPeriod;
  int64_t due_ = 0;  // when the next present is due; 0 when off schedule
};

}  // namespace kit
