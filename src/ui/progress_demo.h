#pragma once

#include <memory>

#include "kit/foundation/run_loop.h"
#include "kit/foundation/timer.h"
#include "kit/ui/view.h"
#include "ui/progress_overlay.h"

// A short show of the progress overlay over a host view, for trying its look
// from the command line: the overlay appears after its grace time, counts
// from 0 to 100 % in about three seconds ("Loading 40%"), then fades out.
// Owns the overlay and its ticking timer; dropping the demo ends it at once.
// The run loop is borrowed and outlives it; an installed kit::Animator runs
// the fades. Main thread only.
class ProgressDemo {
 public:
  static constexpr double kStepSeconds = 0.1;
  static constexpr int kSteps = 30;

  ProgressDemo(const std::shared_ptr<kit::View>& host, kit::RunLoop& runLoop,
               ProgressOverlay::Mode mode);
  ~ProgressDemo();
  ProgressDemo(const ProgressDemo&) = delete;
  ProgressDemo& operator=(const ProgressDemo&) = delete;

  // True once the count is done and the overlay has left the host.
  bool isFinished() const;
  const ProgressOverlay& overlay() const { return overlay_; }

 private:
  void step();

  ProgressOverlay overlay_;
  std::shared_ptr<kit::Timer> timer_;
  int done_ = 0;
};

// Starts the demo over `host` (a ring unless told otherwise). Keep the result
// alive until isFinished().
std::unique_ptr<ProgressDemo> runProgressDemo(
    const std::shared_ptr<kit::View>& host, kit::RunLoop& runLoop,
    ProgressOverlay::Mode mode = ProgressOverlay::Mode::Ring);
