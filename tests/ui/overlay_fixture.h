#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "kit/foundation/clock.h"
#include "kit/foundation/log.h"
#include "kit/foundation/run_loop.h"
#include "kit/ui/animator.h"
#include "kit/ui/label.h"
#include "kit/ui/view.h"
#include "ui/view_toast.h"

// Headless frames for what is laid over a host view (toasts, the progress
// overlay): a manual clock driving a run loop and an animator installed as
// current, and the toast log captured, all for the test's length.
class OverlayTest : public ::testing::Test {
 protected:
  OverlayTest()
      : previousAnimator_(kit::Animator::setCurrent(&animator)), previousLog_(setToastLog(&log)) {}
  ~OverlayTest() override {
    setToastLog(previousLog_);
    kit::Animator::setCurrent(previousAnimator_);
  }

  static std::shared_ptr<kit::View> makeHost(double width, double height) {
    return std::make_shared<kit::View>(kit::Rect{{0, 0}, {width, height}});
  }

  // Moves time on by `seconds` in 60 Hz frames: timers, then animations.
  void advance(double seconds) {
    const int64_t end =
        clock.monotonicNanos() + static_cast<int64_t>(seconds * kit::kNanosPerSecond);
    constexpr int64_t kFrame = kit::kNanosPerSecond / 60;
    while (clock.monotonicNanos() < end) {
      clock.advance(std::min(kFrame, end - clock.monotonicNanos()));
      runLoop.runOnce();
      animator.tick();
    }
  }

  // What lies over the host, bottom first.
  static std::vector<std::shared_ptr<kit::View>> toastsOf(const kit::View& host) {
    return host.subviews();
  }
  // The only view over the host (fails the test when there is not exactly one).
  static std::shared_ptr<kit::View> onlyToastOf(const kit::View& host) {
    EXPECT_EQ(host.subviews().size(), 1u);
    return host.subviews().empty() ? nullptr : host.subviews().back();
  }
  // The labels of a toast panel, in adding order.
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

 private:
  kit::Animator* previousAnimator_;
  kit::Log* previousLog_;
};
