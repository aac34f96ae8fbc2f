#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/clock.h"
#include "kit/ui/animator.h"
#include "kit/ui/view.h"

namespace kit {

// A manual clock and an animator installed as current for the test's length,
// plus a log of what callbacks did, in order.
class UiTest : public ::testing::Test {
 protected:
  UiTest() : previous_(Animator::setCurrent(&animator)) {}
  ~UiTest() override { Animator::setCurrent(previous_); }

  // Moves time on by `seconds` in 60 Hz frames, ticking after each frame.
  void advance(double seconds) {
    const auto end = clock.monotonicNanos() + static_cast<int64_t>(seconds * kNanosPerSecond);
    constexpr int64_t kFrame = kNanosPerSecond / 60;
    while (clock.monotonicNanos() < end) {
      clock.advance(std::min(kFrame, end - clock.monotonicNanos()));
      animator.tick();
    }
  }

  // One tick without moving time.
  void tick() { animator.tick(); }

  std::shared_ptr<View> makeView(Rect frame) { return std::make_shared<View>(frame); }

  // A completion that records "name:finished" or "name:interrupted".
  std::function<void(bool)> record(std::string name) {
    return [this, name](bool finished) {
      events.push_back(name + (finished ? ":finished" : ":interrupted"));
    };
  }

  ManualClock clock;
  Animator animator{clock};
  std::vector<std::string> events;

 private:
  Animator* previous_;
};

}  // namespace kit
