#include "kit/ui/animator.h"

#include <algorithm>
#include <cmath>

#include "kit/ui/animation_track.h"

namespace kit {
namespace {

Animator* gCurrent = nullptr;

// Longest delay or duration taken, so times stay far from int64 overflow.
constexpr double kMaxSeconds = 1e9;

int64_t toNanos(double seconds) {
  if (!(seconds > 0))
    return 0;  // negative, zero and NaN
  return static_cast<int64_t>(std::llround(std::min(seconds, kMaxSeconds) * kNanosPerSecond));
}

void retain(AnimationGroup& group, std::shared_ptr<View> view) {
  for (const auto& held : group.views) {
    if (held == view)
      return;
  }
  group.views.push_back(std::move(view));
}

}  // namespace

struct Animator::State {
  int64_t now = 0;
  uint64_t nextSequence = 0;
  std::vector<std::unique_ptr<AnimationGroup>> groups;  // started, completion not yet run
  std::vector<AnimationGroup*> open;                    // blocks running, innermost last
};

AnimatedValue AnimationTrack::value() const {
  AnimatedValue v;
  for (size_t i = 0; i < v.size(); ++i)
    v[i] = from[i] + (to[i] - from[i]) * progress;
  return v;
}

Animator::Animator(const Clock& clock) : clock_(clock), state_(std::make_unique<State>()) {
  state_->now = clock.monotonicNanos();
}

Animator::~Animator() {
  if (gCurrent == this)
    gCurrent = nullptr;
  for (auto& group : state_->groups) {
    for (auto& track : group->tracks) {
      AnimatorAccess::detach(*track);
    }
  }
  // Views released here may own views of other groups: empty the list first.
  auto groups = std::move(state_->groups);
  groups.clear();
}

Animator* Animator::current() {
  return gCurrent;
}

Animator* Animator::setCurrent(Animator* animator) {
  Animator* previous = gCurrent;
  gCurrent = animator;
  return previous;
}

int64_t Animator::now() const {
  return state_->now;
}

bool Animator::isAnimating() const {
  return !state_->groups.empty();
}

void Animator::tick() {
  const int64_t now = clock_.monotonicNanos();
  state_->now = now;

  // Groups started by the completions below wait for the next tick.
  const size_t count = state_->groups.size();
  for (size_t i = 0; i < count; ++i) {
    AnimationGroup& group = *state_->groups[i];
    if (group.ended || group.open)
      continue;
    if (now >= group.endTime()) {
      for (auto& track : group.tracks) {
        AnimatorAccess::detach(*track);
      }
      group.tracks.clear();
      group.ended = true;
      group.endedAt = group.endTime();
      continue;
    }
    const int64_t elapsed = now - group.start - group.delay;
    const double t = elapsed <= 0 || group.duration <= 0
                         ? 0
                         : static_cast<double>(elapsed) / static_cast<double>(group.duration);
    const double eased = easedProgress(group.curve, t);
    for (auto& track : group.tracks)
      track->progress = eased;
  }

  std::vector<std::unique_ptr<AnimationGroup>> done;
  for (size_t i = 0; i < count; ++i) {
    if (state_->groups[i]->ended)
      done.push_back(std::move(state_->groups[i]));
  }
  std::erase(state_->groups, nullptr);
  std::sort(done.begin(), done.end(), [](const auto& a, const auto& b) {
    return a->endedAt != b->endedAt ? a->endedAt < b->endedAt : a->sequence < b->sequence;
  });
  for (auto& group : done) {
    if (group->completion)
      group->completion(!group->interrupted);
    group.reset();  // releases its views
  }
}

void AnimatorAccess::propertyChanged(View& view, AnimatedProperty property,
                                     const AnimatedValue& before, const AnimatedValue& after) {
  auto& slot = view.tracks_[static_cast<size_t>(property)];
  Animator* animator = Animator::current();
  AnimationGroup* group =
      animator && !animator->state_->open.empty() ? animator->state_->open.back() : nullptr;
  if (!group || group->immediate) {
    if (slot)
      stop(view, property);
    return;
  }
  if (slot && slot->group == group) {  // set again in the same block
    slot->to = after;
    return;
  }
  auto self = view.weak_from_this().lock();
  if (!self) {  // not held by a shared_ptr: nothing could keep it alive
    if (slot)
      stop(view, property);
    return;
  }
  AnimatedValue from = before;
  if (slot) {
    if (group->fromCurrentState)
      from = slot->value();
    stop(view, property);
  }
  auto track = std::make_shared<AnimationTrack>();
  track->view = &view;
  track->property = property;
  track->from = from;
  track->to = after;
  track->group = group;
  slot = track;
  group->tracks.push_back(std::move(track));
  retain(*group, std::move(self));
}

void AnimatorAccess::stop(View& view, AnimatedProperty property) {
  auto track = std::move(view.tracks_[static_cast<size_t>(property)]);
  if (!track)
    return;
  AnimationGroup& group = *track->group;
  std::erase(group.tracks, track);
  group.interrupted = true;
  if (group.tracks.empty() && !group.open && !group.ended) {
    group.ended = true;
    group.endedAt = group.clock->monotonicNanos();
  }
}

void AnimatorAccess::run(Animator& animator, double duration, double delay,
                         AnimationOptions options, const std::function<void()>& animations,
                         std::function<void(bool)> completion) {
  auto& state = *animator.state_;
  auto group = std::make_unique<AnimationGroup>();
  group->sequence = state.nextSequence++;
  group->clock = &animator.clock_;
  group->start = animator.clock_.monotonicNanos();
  group->delay = toNanos(delay);
  group->duration = toNanos(duration);
  group->curve = curveOf(options);
  group->fromCurrentState = hasOption(options, AnimationOptions::BeginFromCurrentState);
  group->immediate = group->delay == 0 && group->duration == 0;
  group->completion = std::move(completion);
  AnimationGroup* raw = group.get();
  state.groups.push_back(std::move(group));

  state.open.push_back(raw);
  if (animations)
    animations();
  state.open.pop_back();
  raw->open = false;
  // Every change it made was taken over inside the block itself.
  if (raw->interrupted && raw->tracks.empty()) {
    raw->ended = true;
    raw->endedAt = animator.clock_.monotonicNanos();
  }
}

void View::animateWithDuration(double duration, double delay, AnimationOptions options,
                               const std::function<void()>& animations,
                               std::function<void(bool)> completion) {
  Animator* animator = Animator::current();
  if (!animator) {
    if (animations)
      animations();
    if (completion)
      completion(true);
    return;
  }
  AnimatorAccess::run(*animator, duration, delay, options, animations, std::move(completion));
}

void View::animateWithDuration(double duration, const std::function<void()>& animations,
                               std::function<void(bool)> completion) {
  animateWithDuration(duration, 0, AnimationOptions::None, animations, std::move(completion));
}

void View::animateWithDuration(double duration, const std::function<void()>& animations) {
  animateWithDuration(duration, 0, AnimationOptions::None, animations, {});
}

}  // namespace kit
