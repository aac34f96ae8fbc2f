#include "ui/progress_demo.h"

#include <string>

namespace {

std::string percentLabel(int done, int steps) {
  return "Loading " + std::to_string(done * 100 / steps) + "%";
}

}  // namespace

ProgressDemo::ProgressDemo(const std::shared_ptr<kit::View>& host, kit::RunLoop& runLoop,
                           ProgressOverlay::Mode mode)
    : overlay_(host, runLoop, mode) {
  overlay_.setLabelText(percentLabel(0, kSteps));
  overlay_.show();
  timer_ = runLoop.scheduledTimer(
      kStepSeconds, [this] { step(); }, true);
}

ProgressDemo::~ProgressDemo() {
  if (timer_)
    timer_->invalidate();
}

bool ProgressDemo::isFinished() const {
  return done_ >= kSteps && !overlay_.isVisible();
}

void ProgressDemo::step() {
  ++done_;
  overlay_.setProgress(static_cast<double>(done_) / kSteps);
  overlay_.setLabelText(percentLabel(done_, kSteps));
  if (done_ >= kSteps) {
    timer_->invalidate();
    timer_.reset();
    overlay_.hide();
  }
}

std::unique_ptr<ProgressDemo> runProgressDemo(const std::shared_ptr<kit::View>& host,
                                              kit::RunLoop& runLoop, ProgressOverlay::Mode mode) {
  return std::make_unique<ProgressDemo>(host, runLoop, mode);
}
