#include "kit/backends/web/animation_frame_host.h"

#include <emscripten/emscripten.h>

#include <cmath>

namespace kit::web {
namespace {

int64_t nowNanos() {
  return static_cast<int64_t>(std::llround(emscripten_get_now() * 1e6));
}

}  // namespace

void AnimationFrameHost::run(Frame frame) {
  frame_ = std::move(frame);
  running_ = true;
  // 0 frames per second: requestAnimationFrame. Simulating an infinite loop
  // keeps the caller's stack (the application) alive.
  emscripten_set_main_loop_arg(&AnimationFrameHost::tick, this, 0, EM_TRUE);
}

void AnimationFrameHost::stop() {
  if (!running_)
    return;
  running_ = false;
  emscripten_cancel_main_loop();
}

void AnimationFrameHost::runFrameNow() {
  if (running_)
    tick(this);
}

void AnimationFrameHost::tick(void* self) {
  auto& host = *static_cast<AnimationFrameHost*>(self);
  if (!host.running_ || !host.frame_)
    return;
  if (!host.frame_(nowNanos()))
    host.stop();
}

}  // namespace kit::web
