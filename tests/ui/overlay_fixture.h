#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "kit/foundation/clock.h"
#include "kit/foundation/log.h"
#include "kit/foundation/run_loop.h"
#include "kit/ui/animator.h"
#include "kit/ui/label.h"
#include "ui/view_toast.h"

// Headless frames for what is laid over a host view (toasts, the progress
// overlay): a manual clock driving a run loop and an animator installed as
// current, and the toast log captured, all for the test's length.
class OverlayTest : public ::testing::Test {
 protected:
  ~OverlayTest() override {
    setToastLog(previousLog_);
    kit::Animator::setCurrent(previousAnimator_);
  }

  // Moves time on by `seconds` in 60 Hz frames: timers, then animations.
  void advance(double seconds) {
    const int64_t end =
        clock.monotonicNanos() + static_cast<int64_t>(seconds * kit::kNanosPerSecond);
    while (clock.monotonicNanos() < end) {
      clock.advance(std::min(kit::kNanosPerSecond / 60, end - clock.monotonicNanos()));
      runLoop.runOnce();
      animator.tick();
    }
  }

  static std::shared_ptr<kit::View> onlyToastOf(const kit::View& host) {
    EXPECT_EQ(host.subviews().size(), 1u);
    return host.subviews().empty() ? nullptr : host.subviews().back();
  }
  static std::vector<std::shared_ptr<kit::Label>> labelsOf(const kit::View& panel) {
    std::vector<std::shared_ptr<kit::Label>> labels;
    for (const auto& view : panel.subviews()) {
      if (auto label = std::dynamic_pointer_cast<kit::Label>(view))
        labels.push_back(label);
    }
    return labels;
  }

  kit::ManualClock clock;
  kit::RunLoop runLoop{clock};
  kit::Animator animator{clock};
  kit::CapturingLog log;
  std::shared_ptr<kit::View> host = std::make_shared<kit::View>(kit::Rect{{0, 0}, {320, 480}});

 private:
  kit::Animator* previousAnimator_ = kit::Animator::setCurrent(&animator);
  kit::Log* previousLog_ = setToastLog(&log);
};
