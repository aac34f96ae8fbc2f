#include "kit/scene/action.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "kit/scene/action_run.h"
#include "kit/scene/node.h"
#include "kit/scene/sprite_node.h"

namespace kit {

// Node internals that actions move. Relative moves go through the node's
// compensated sums (see Node::translateBy).
struct ActionAccess {
  static void translateBy(Node& node, Vector delta) { node.translateBy(delta); }
  static void rotateBy(Node& node, double radians) { node.rotateBy(radians); }
  static void setY(Node& node, double y) { node.setPosition({node.position().x, y}); }
};

namespace {

// Frame times come from a nanosecond clock, and summing them in seconds
// leaves rounding dust: an action whose end falls on a frame counts as ended
// within a nanosecond of it, rather than lingering for one more frame.
constexpr double kTimeTolerance = 1e-9;

double sanitizedDuration(double seconds) {
  return std::isnan(seconds) || seconds <= 0 ? 0.0 : seconds;
}

// A run of a fixed duration that maps elapsed time to progress 0..1 and
// reports exactly 1 at its end.
class TimedRun : public ActionRun {
 public:
  explicit TimedRun(double duration) : duration_(duration) {}

  double advance(Node& node, double dt, ActionContext&) final {
    if (!started_) {
      started_ = true;
      start(node);
    }
    elapsed_ += dt;
    if (elapsed_ >= duration_ - kTimeTolerance) {
      step(node, 1.0);
      return std::max(0.0, elapsed_ - duration_);
    }
    step(node, elapsed_ / duration_);
    return kStillRunning;
  }

 protected:
  virtual void start(Node&) {}
  virtual void step(Node& node, double progress) = 0;

 private:
  double duration_;
  double elapsed_ = 0;
  bool started_ = false;
};

// Relative change of a value: each step applies the progress made since the
// last step, and the last step whatever is left of the total. The applied
// part is kept as the last target (not as a running sum), so consecutive
// differences telescope and the pieces add up to exactly `total`.
template <typename T, typename Apply>
class RelativeRun final : public TimedRun {
 public:
  RelativeRun(T total, double duration, Apply apply)
      : TimedRun(duration), total_(total), apply_(apply) {}

 private:
  void step(Node& node, double progress) override {
    const T target = progress >= 1.0 ? total_ : scaled(total_, progress);
    const T delta = minus(target, applied_);
    applied_ = target;
    apply_(node, delta);
  }
  static double scaled(double v, double p) { return v * p; }
  static Vector scaled(Vector v, double p) { return {v.x * p, v.y * p}; }
  static double minus(double a, double b) { return a - b; }
  static Vector minus(Vector a, Vector b) { return {a.x - b.x, a.y - b.y}; }

  T total_;
  T applied_{};
  Apply apply_;
};

// Absolute change of a value from whatever it was at the start.
template <typename Get, typename Set>
class AbsoluteRun final : public TimedRun {
 public:
  AbsoluteRun(double target, double duration, Get get, Set set)
      : TimedRun(duration), target_(target), get_(get), set_(set) {}

 private:
  void start(Node& node) override { from_ = get_(node); }
  void step(Node& node, double progress) override {
    set_(node, progress >= 1.0 ? target_ : from_ + (target_ - from_) * progress);
  }

  double target_;
  double from_ = 0;
  Get get_;
  Set set_;
};

class WaitRun final : public TimedRun {
 public:
  using TimedRun::TimedRun;

 private:
  void step(Node&, double) override {}
};

class MoveByAction final : public Action {
 public:
  MoveByAction(Vector delta, double duration) : Action(duration), delta_(delta) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    auto apply = [](Node& node, Vector d) { ActionAccess::translateBy(node, d); };
    return std::make_unique<RelativeRun<Vector, decltype(apply)>>(delta_, duration(), apply);
  }

 private:
  Vector delta_;
};

class RotateByAction final : public Action {
 public:
  RotateByAction(double radians, double duration) : Action(duration), radians_(radians) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    auto apply = [](Node& node, double d) { ActionAccess::rotateBy(node, d); };
    return std::make_unique<RelativeRun<double, decltype(apply)>>(radians_, duration(), apply);
  }

 private:
  double radians_;
};

class MoveToYAction final : public Action {
 public:
  MoveToYAction(double y, double duration) : Action(duration), y_(y) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    auto get = [](Node& node) { return node.position().y; };
    auto set = [](Node& node, double y) { ActionAccess::setY(node, y); };
    return std::make_unique<AbsoluteRun<decltype(get), decltype(set)>>(y_, duration(), get, set);
  }

 private:
  double y_;
};

class FadeAlphaAction final : public Action {
 public:
  FadeAlphaAction(double alpha, double duration) : Action(duration), alpha_(alpha) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    auto get = [](Node& node) { return node.alpha(); };
    auto set = [](Node& node, double a) { node.setAlpha(a); };
    return std::make_unique<AbsoluteRun<decltype(get), decltype(set)>>(alpha_, duration(), get,
                                                                       set);
  }

 private:
  double alpha_;
};

class WaitAction final : public Action {
 public:
  explicit WaitAction(double duration) : Action(duration) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    return std::make_unique<WaitRun>(duration());
  }
};

class SequenceRun final : public ActionRun {
 public:
  explicit SequenceRun(const std::vector<ActionPtr>& steps) : steps_(steps) {}

  double advance(Node& node, double dt, ActionContext& context) override {
    while (index_ < steps_.size()) {
      if (!current_)
        current_ = steps_[index_]->makeRun();
      const double left = current_->advance(node, dt, context);
      if (left < 0)
        return kStillRunning;
      current_.reset();
      ++index_;
      dt = left;
    }
    return dt;
  }
  void cancel(Node& node) override {
    if (current_)
      current_->cancel(node);
  }

 private:
  const std::vector<ActionPtr>& steps_;  // owned by the description, which outlives the run
  std::size_t index_ = 0;
  std::unique_ptr<ActionRun> current_;
};

class SequenceAction final : public Action {
 public:
  SequenceAction(std::vector<ActionPtr> steps, double duration)
      : Action(duration), steps_(std::move(steps)) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    return std::make_unique<SequenceRun>(steps_);
  }

 private:
  std::vector<ActionPtr> steps_;
};

class GroupRun final : public ActionRun {
 public:
  explicit GroupRun(const std::vector<ActionPtr>& members) {
    for (const auto& member : members)
      runs_.push_back(member->makeRun());
  }

  double advance(Node& node, double dt, ActionContext& context) override {
    bool running = false;
    double left = dt;
    for (auto& run : runs_) {
      if (!run)
        continue;
      const double l = run->advance(node, dt, context);
      if (l < 0) {
        running = true;
      } else {
        left = std::min(left, l);
        run.reset();
      }
    }
    return running ? kStillRunning : left;
  }
  void cancel(Node& node) override {
    for (auto& run : runs_) {
      if (run)
        run->cancel(node);
    }
  }

 private:
  std::vector<std::unique_ptr<ActionRun>> runs_;
};

class GroupAction final : public Action {
 public:
  GroupAction(std::vector<ActionPtr> members, double duration)
      : Action(duration), members_(std::move(members)) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    return std::make_unique<GroupRun>(members_);
  }

 private:
  std::vector<ActionPtr> members_;
};

// Bounds the passes of one repeat per frame, so that a pathological action
// (a repeat of a near-zero wait) cannot stall a frame; the rest of that
// frame's time is dropped.
constexpr int kMaxPassesPerStep = 10'000;

class RepeatForeverRun final : public ActionRun {
 public:
  explicit RepeatForeverRun(const ActionPtr& body) : body_(body) {}

  double advance(Node& node, double dt, ActionContext& context) override {
    if (!body_)
      return kStillRunning;
    for (int pass = 0; pass < kMaxPassesPerStep; ++pass) {
      if (!current_)
        current_ = body_->makeRun();
      const double left = current_->advance(node, dt, context);
      if (left < 0)
        break;
      current_.reset();
      // A pass that took no time would repeat without end: one per frame.
      if (body_->duration() <= 0 || left >= dt)
        break;
      dt = left;
    }
    return kStillRunning;
  }
  void cancel(Node& node) override {
    if (current_)
      current_->cancel(node);
  }

 private:
  const ActionPtr& body_;  // owned by the description, which outlives the run
  std::unique_ptr<ActionRun> current_;
};

class RepeatForeverAction final : public Action {
 public:
  explicit RepeatForeverAction(ActionPtr body)
      : Action(std::numeric_limits<double>::infinity()), body_(std::move(body)) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    return std::make_unique<RepeatForeverRun>(body_);
  }

 private:
  ActionPtr body_;
};

class AnimateRun final : public ActionRun {
 public:
  AnimateRun(const std::vector<Texture>& frames, double timePerFrame, bool resize, bool restore)
      : frames_(frames), timePerFrame_(timePerFrame), resize_(resize), restore_(restore) {}

  double advance(Node& node, double dt, ActionContext&) override {
    auto* sprite = dynamic_cast<SpriteNode*>(&node);
    if (!started_) {
      started_ = true;
      if (sprite) {
        original_ = sprite->texture();
        originalSize_ = sprite->size();
      }
    }
    elapsed_ += dt;
    const double duration = timePerFrame_ * static_cast<double>(frames_.size());
    if (elapsed_ >= duration - kTimeTolerance) {
      if (sprite && !frames_.empty())
        show(*sprite, frames_.back());
      if (sprite && restore_)
        putBack(*sprite);
      return std::max(0.0, elapsed_ - duration);
    }
    const auto shown = static_cast<std::size_t>((elapsed_ + kTimeTolerance) / timePerFrame_);
    const auto index = std::min(frames_.size() - 1, shown);
    if (sprite)
      show(*sprite, frames_[index]);
    return kStillRunning;
  }
  void cancel(Node& node) override {
    auto* sprite = dynamic_cast<SpriteNode*>(&node);
    if (sprite && started_ && restore_)
      putBack(*sprite);
  }

 private:
  void show(SpriteNode& sprite, const Texture& texture) const {
    sprite.setTexture(texture);
    if (resize_ && texture.size().width > 0 && texture.size().height > 0) {
      sprite.setSize(texture.size());
    }
  }
  void putBack(SpriteNode& sprite) const {
    sprite.setTexture(original_);
    if (resize_)
      sprite.setSize(originalSize_);
  }

  const std::vector<Texture>& frames_;  // owned by the description, which outlives the run
  double timePerFrame_;
  bool resize_;
  bool restore_;
  bool started_ = false;
  double elapsed_ = 0;
  Texture original_;
  Size originalSize_;
};

class AnimateAction final : public Action {
 public:
  AnimateAction(std::vector<Texture> frames, double timePerFrame, bool resize, bool restore)
      : Action(timePerFrame * static_cast<double>(frames.size())),
        frames_(std::move(frames)),
        timePerFrame_(timePerFrame),
        resize_(resize),
        restore_(restore) {}
  std::unique_ptr<ActionRun> makeRun() const override {
    return std::make_unique<AnimateRun>(frames_, timePerFrame_, resize_, restore_);
  }

 private:
  std::vector<Texture> frames_;
  double timePerFrame_;
  bool resize_;
  bool restore_;
};

class BlockRun final : public ActionRun {
 public:
  explicit BlockRun(const std::function<void()>& block) : block_(block) {}
  double advance(Node&, double dt, ActionContext& context) override {
    if (block_)
      context.queueBlock(block_);
    return dt;
  }

 private:
  const std::function<void()>& block_;  // owned by the description
};

class BlockAction final : public Action {
 public:
  explicit BlockAction(std::function<void()> block) : Action(0), block_(std::move(block)) {}
  std::unique_ptr<ActionRun> makeRun() const override { return std::make_unique<BlockRun>(block_); }

 private:
  std::function<void()> block_;
};

std::vector<ActionPtr> withoutNulls(std::vector<ActionPtr> actions) {
  std::erase(actions, nullptr);
  return actions;
}

}  // namespace

ActionPtr Action::moveBy(Vector delta, double duration) {
  return std::make_shared<MoveByAction>(delta, sanitizedDuration(duration));
}

ActionPtr Action::moveToY(double y, double duration) {
  return std::make_shared<MoveToYAction>(y, sanitizedDuration(duration));
}

ActionPtr Action::rotateByAngle(double radians, double duration) {
  return std::make_shared<RotateByAction>(radians, sanitizedDuration(duration));
}

ActionPtr Action::fadeAlphaTo(double alpha, double duration) {
  return std::make_shared<FadeAlphaAction>(alpha, sanitizedDuration(duration));
}

ActionPtr Action::fadeInWithDuration(double duration) {
  return fadeAlphaTo(1.0, duration);
}

ActionPtr Action::fadeOutWithDuration(double duration) {
  return fadeAlphaTo(0.0, duration);
}

ActionPtr Action::waitForDuration(double duration) {
  return std::make_shared<WaitAction>(sanitizedDuration(duration));
}

ActionPtr Action::sequence(std::vector<ActionPtr> actions) {
  actions = withoutNulls(std::move(actions));
  double total = 0;
  for (const auto& a : actions)
    total += a->duration();
  return std::make_shared<SequenceAction>(std::move(actions), total);
}

ActionPtr Action::group(std::vector<ActionPtr> actions) {
  actions = withoutNulls(std::move(actions));
  double longest = 0;
  for (const auto& a : actions)
    longest = std::max(longest, a->duration());
  return std::make_shared<GroupAction>(std::move(actions), longest);
}

ActionPtr Action::repeatActionForever(ActionPtr action) {
  return std::make_shared<RepeatForeverAction>(std::move(action));
}

ActionPtr Action::animateWithTextures(std::vector<Texture> textures, double timePerFrame,
                                      bool resize, bool restore) {
  return std::make_shared<AnimateAction>(std::move(textures), sanitizedDuration(timePerFrame),
                                         resize, restore);
}

ActionPtr Action::runBlock(std::function<void()> block) {
  return std::make_shared<BlockAction>(std::move(block));
}

}  // namespace kit
