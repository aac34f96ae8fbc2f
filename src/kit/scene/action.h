#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/scene/texture.h"

namespace kit {

class Action;
class ActionRun;

// Actions are shared, immutable descriptions.
using ActionPtr = std::shared_ptr<const Action>;

// A description of a change over time, made by the
// factories below and run on a node with Node::runAction. The description is
// immutable and may be run on many nodes at once; each run gets its own state.
// All timing is linear. Durations are in seconds; a negative or NaN duration
// counts as 0.
//
// Relative actions (moveBy, rotateByAngle) add to whatever else moves the
// node, so two overlapping moves on one node sum, and each applies exactly its
// full amount by its end: every step applies its share of the progress made
// since the previous step, and the last step applies the remainder. Absolute
// actions (moveToY, fadeAlphaTo) read their start value when they start.
class Action {
 public:
  virtual ~Action() = default;

  // Moves by `delta` points.
  static ActionPtr moveBy(Vector delta, double duration);
  // Moves to the given y; x is left alone.
  static ActionPtr moveToY(double y, double duration);
  // Rotates by `radians`, counter-clockwise for positive values.
  static ActionPtr rotateByAngle(double radians, double duration);
  static ActionPtr fadeAlphaTo(double alpha, double duration);
  static ActionPtr fadeInWithDuration(double duration);   // to alpha 1
  static ActionPtr fadeOutWithDuration(double duration);  // to alpha 0
  static ActionPtr waitForDuration(double duration);
  // One after the other; leftover time flows into the next. Null entries are
  // skipped.
  static ActionPtr sequence(std::vector<ActionPtr> actions);
  // All at once; ends when the longest ends. Null entries are skipped.
  static ActionPtr group(std::vector<ActionPtr> actions);
  // Restarts `action` each time it ends, for ever. When one pass takes no
  // time (a zero-duration action), it runs once per frame. Null repeats
  // nothing for ever.
  static ActionPtr repeatActionForever(ActionPtr action);
  // Shows the textures in turn, `timePerFrame` seconds each, on a SpriteNode
  // (on any other node it only takes its time). `resize` sets the sprite's
  // size to each texture's natural size when that is known. `restore` puts
  // back the texture the sprite had when the animation started, once it ends
  // or is removed.
  static ActionPtr animateWithTextures(std::vector<Texture> textures, double timePerFrame,
                                       bool resize, bool restore);
  // Calls `block` (zero duration). The call happens after the frame's tree
  // walk, with the other blocks of the frame (see Node::runAction).
  static ActionPtr runBlock(std::function<void()> block);

  // Seconds; infinity for repeatActionForever.
  double duration() const { return duration_; }

  // A fresh running state for one run of this description (used by the node
  // that runs it; the game has no need to call it).
  virtual std::unique_ptr<ActionRun> makeRun() const = 0;

 protected:
  explicit Action(double duration) : duration_(duration) {}

 private:
  double duration_;
};

}  // namespace kit
