#pragma once

#include <cstdint>
#include <functional>

namespace kit {

// Who drives frames: a paced loop on the desktop, requestAnimationFrame in the
// browser, a counted loop in headless runs. run() calls `frame` once per
// display refresh with the frame's monotonic time until `frame` returns false
// or stop() is called; on the desktop it returns then, in the browser it
// returns at once and frames keep coming from the browser's callbacks (so
// nothing may rely on code after run() running later). `idle` tells the host
// nothing is visible (minimised), so it may sleep rather than spin.
// Owned by the backend. Main thread only.
class FrameHost {
 public:
  virtual ~FrameHost() = default;
  using Frame = std::function<bool(int64_t nowNanos)>;
  virtual void run(Frame frame) = 0;
  virtual void stop() = 0;
  virtual void setIdle(bool idle) = 0;
};

}  // namespace kit
