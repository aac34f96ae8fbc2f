#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "kit/foundation/run_loop.h"
#include "kit/foundation/timer.h"
#include "kit/ui/view.h"

class ProgressBarView;
class ProgressRingView;

// When the overlay appears and how long it stays, in seconds.
struct ProgressOverlayTiming {
  // Work that ends within this time after show() shows nothing at all.
  double graceTime = 0.3;
  // Once on screen the panel stays at least this long, even if hidden sooner.
  double minShowTime = 0.5;
  double fadeDuration = 0.2;
};

// A translucent rounded panel centred over a host view that says work is
// under way: a spinner, or a ring or bar that fills with progress, and an
// optional line of text under it. It appears only after a grace time and,
// once shown, stays a minimum time, so quick work never makes it flash.
//
// Owned by whoever runs the work; the host is held weakly and the panel is
// its subview only while shown. Destroying the overlay removes the panel at
// once. The run loop is borrowed and outlives the overlay: its clock times
// the grace and minimum times; the fades follow kit::Animator::current().
// Main thread only.
class ProgressOverlay {
 public:
  enum class Mode { Indeterminate, Ring, Bar };

  ProgressOverlay(const std::shared_ptr<kit::View>& host, kit::RunLoop& runLoop,
                  Mode mode = Mode::Indeterminate, ProgressOverlayTiming timing = {});
  ~ProgressOverlay();
  ProgressOverlay(const ProgressOverlay&) = delete;
  ProgressOverlay& operator=(const ProgressOverlay&) = delete;

  // Starts the grace time (or, while fading out or waiting out the minimum
  // time after a hide, keeps the panel up). Repeated calls change nothing.
  void show();
  // Cancels a pending appearance, or fades the panel out once it has been up
  // for the minimum time, then removes it from the host.
  void hide();

  // True from the panel's fade-in to the end of its fade-out.
  bool isVisible() const;

  double progress() const { return progress_; }
  // Clamped to 0..1 (NaN counts as 0); shown by the ring and the bar.
  void setProgress(double progress);
  Mode mode() const { return mode_; }
  void setMode(Mode mode);
  const std::string& labelText() const { return labelText_; }
  // One or more lines under the indicator; empty for none.
  void setLabelText(std::string text);

  // The panel, for dumps and tests; built even while not shown.
  const std::shared_ptr<kit::View>& panel() const { return panel_; }

 private:
  enum class State { Hidden, Waiting, Shown, Holding, Hiding };

  void rebuild();
  void centreInHost();
  void appear();
  void fadeOut();
  void cancelTimer();
  int64_t now() const;

  std::weak_ptr<kit::View> host_;
  kit::RunLoop& runLoop_;
  Mode mode_;
  ProgressOverlayTiming timing_;
  double progress_ = 0;
  std::string labelText_;

  std::shared_ptr<kit::View> panel_;
  std::shared_ptr<ProgressRingView> ring_;
  std::shared_ptr<ProgressBarView> bar_;

  State state_ = State::Hidden;
  int64_t shownAt_ = 0;
  uint64_t fadeGeneration_ = 0;        // tells a stale fade-out's completion from the current one
  std::shared_ptr<kit::Timer> timer_;  // the grace or the minimum time
  // Weak handles on this overlay for animation completions, which may
  // outlive it.
  std::shared_ptr<ProgressOverlay*> self_;
};
