#pragma once

#include <cstdint>
#include <functional>

namespace kit::web {

// Frames on the browser's requestAnimationFrame (emscripten's main loop at
// the display's rate). run() hands the frame to the browser and unwinds the
// calling stack without destroying it (so the objects of main() live on
// while frames come), never returning to its caller. A hidden page gets no
// frames; runFrameNow() runs one at once for events that must be seen then
// (the page going to the background). Main thread only.
class AnimationFrameHost {
 public:
  // Returns false to stop the frames.
  using Frame = std::function<bool(int64_t nowNanos)>;
  void run(Frame frame);
  void stop();

  void runFrameNow();

 private:
  static void tick(void* self);
  Frame frame_;
  bool running_ = false;
};

}  // namespace kit::web
