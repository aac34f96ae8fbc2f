#pragma once

// Internal to the view tree and its animator: what one animation block keeps
// while it runs. Not for the system's code.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "kit/ui/animation_options.h"
#include "kit/ui/animator.h"
#include "kit/ui/view.h"

namespace kit {

enum class AnimatedProperty : size_t { Alpha = 0, Frame = 1, BackgroundColor = 2 };

// Alpha uses [0]; a frame is x, y, width, height; a colour r, g, b, a.
using AnimatedValue = std::array<double, 4>;

struct AnimationGroup;

// One property of one view moving from `from` to `to`. The view's slot for
// the property points here while it runs; `view` is non-owning because the
// group holds the view.
struct AnimationTrack {
  View* view = nullptr;
  AnimatedProperty property = AnimatedProperty::Alpha;
  AnimatedValue from{};
  AnimatedValue to{};
  AnimationGroup* group = nullptr;
  double progress = 0;  // eased fraction at the last tick

  AnimatedValue value() const;
};

// One animateWithDuration call.
struct AnimationGroup {
  uint64_t sequence = 0;
  int64_t start = 0;  // monotonic nanos
  int64_t delay = 0;
  int64_t duration = 0;
  AnimationCurve curve = AnimationCurve::EaseInOut;
  bool fromCurrentState = false;
  bool immediate = false;    // no duration and no delay: changes apply at once
  bool open = true;          // its animations block is still running
  bool interrupted = false;  // a track was taken over or stopped
  bool ended = false;
  int64_t endedAt = 0;
  std::function<void(bool)> completion;
  std::vector<std::shared_ptr<AnimationTrack>> tracks;  // running
  std::vector<std::shared_ptr<View>> views;             // held until completion
  const Clock* clock = nullptr;

  int64_t endTime() const { return start + delay + duration; }
};

struct AnimatorAccess {
  // After a model change of an animatable property: inside an animation block
  // it becomes (or retargets) a track; outside, it stops a running track.
  static void propertyChanged(View& view, AnimatedProperty property, const AnimatedValue& before,
                              const AnimatedValue& after);
  // Stops a running track; its group finishes with false once nothing of it runs.
  static void stop(View& view, AnimatedProperty property);
  static void run(Animator& animator, double duration, double delay, AnimationOptions options,
                  const std::function<void()>& animations, std::function<void(bool)> completion);
  // Empties the view's slot of a track that has run to its end.
  static void detach(AnimationTrack& track) {
    track.view->tracks_[static_cast<size_t>(track.property)].reset();
  }
  static const std::shared_ptr<AnimationTrack>& slot(const View& view, AnimatedProperty property) {
    return view.tracks_[static_cast<size_t>(property)];
  }
};

}  // namespace kit
