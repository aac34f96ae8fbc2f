#pragma once

#include <cstdint>
#include <memory>

#include "kit/foundation/clock.h"

namespace kit {

// Drives the view animations of one application. The frame loop calls tick()
// once per frame; animations started by View::animateWithDuration belong to
// the animator installed as current() (the application installs its own, a
// test installs one on a ManualClock). Main thread only.
//
// Timing: an animation starts at the clock's time of the call, shows its
// from-value during its delay, then eases to its target. Presentation values
// change only in tick(), so everything drawn in one frame agrees.
//
// Completions run in tick(), after every property of the tick has been set,
// ordered by the time each animation ended (ties: the order they started).
// An animation ends either by reaching its end time (finished = true) or when
// its last running property is taken over by a newer animation or set
// directly outside an animation block (finished = false; its completion runs
// at the next tick). An animation that changed no property still waits out its
// delay and duration and finishes with true. Animations started from a
// completion are first evaluated at the next tick.
//
// Running animations hold their views, so a view removed from its window (or
// from every other owner) while animating still reaches its end and its
// completion still runs.
class Animator {
 public:
  explicit Animator(const Clock& clock);
  // Drops every running animation without calling its completion, leaving
  // the views at their model values. Uninstalls itself if it is current().
  ~Animator();
  Animator(const Animator&) = delete;
  Animator& operator=(const Animator&) = delete;

  // The process-wide animator used by View::animateWithDuration, or nullptr.
  static Animator* current();
  // Installs `animator` (nullptr uninstalls) and returns the previous one.
  static Animator* setCurrent(Animator* animator);

  // Advances every animation to the clock's current time, then runs the
  // completions of those that ended.
  void tick();

  // Monotonic time of the last tick(), in nanoseconds (the clock's time at
  // construction before the first tick).
  int64_t now() const;
  const Clock& clock() const { return clock_; }

  // True while an animation runs or a completion waits for the next tick
  // (the frame loop may idle otherwise).
  bool isAnimating() const;

 private:
  friend struct AnimatorAccess;  // the view tree's side, in animation_track.h
  struct State;
  const Clock& clock_;
  std::unique_ptr<State> state_;
};

}  // namespace kit
