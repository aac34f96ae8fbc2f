#pragma once

#include <memory>
#include <optional>

#include "kit/foundation/geometry.h"
#include "kit/scene/affine_transform.h"
#include "kit/scene/node.h"
#include "kit/scene/physics_world.h"
#include "kit/scene/touch.h"

namespace kit {

// How a scene of fixed size maps onto a view of another size.
enum class SceneScaleMode {
  Fill = 0,        // stretch each axis
  AspectFill = 1,  // one scale, fills the view, may crop
  AspectFit = 2,   // one scale, whole scene visible, may letterbox
  ResizeFill = 3,  // no scaling (the window layer sizes the scene to the view)
};

// The root of a node tree: a fixed size in points,
// the physics world, and the per-frame hooks a game overrides. Subclass it,
// build the tree in the constructor (addChild works there already), and give
// it to a FrameDriver to run. Scene coordinates: origin at the lower left of
// the scene rectangle when anchorPoint is (0, 0), y up.
class Scene : public Node {
 public:
  explicit Scene(Size size);
  ~Scene() override;

  static std::shared_ptr<Scene> sceneWithSize(Size size) { return std::make_shared<Scene>(size); }

  Size size() const { return size_; }
  void setSize(Size size) { size_ = size; }
  // Which point of the scene rectangle is the origin, in unit coordinates.
  Point anchorPoint() const { return anchorPoint_; }
  void setAnchorPoint(Point anchor) { anchorPoint_ = anchor; }
  SceneScaleMode scaleMode() const { return scaleMode_; }
  void setScaleMode(SceneScaleMode mode) { scaleMode_ = mode; }

  PhysicsWorld& physicsWorld() { return *physicsWorld_; }
  const PhysicsWorld& physicsWorld() const { return *physicsWorld_; }

  // --- Frame hooks, in the order of a frame (see FrameDriver) ---------------

  // Once per queued touch-began event, before everything else of the frame.
  virtual void touchesBegan(const TouchSet& touches, const Event* event);
  // `currentTime` is the frame's monotonic time in seconds.
  virtual void update(double currentTime);
  // After the actions, the physics step and its contacts.
  virtual void didSimulatePhysics() {}

  // --- View mapping (for the window layer) -----------------------------------

  // Scene coordinates (y up) to the coordinates of a view of `viewSize` points
  // (origin upper left, y down), honouring scaleMode and anchorPoint; the
  // scene is centred in the view.
  AffineTransform sceneToView(Size viewSize) const;
  Point convertPointFromView(Point pointInView, Size viewSize) const;

  // The scene's frame is its rectangle around the anchor.
  Rect frame() const override;

  // Largest time step one frame gives the actions, in seconds: a frame that
  // comes later than this (a stall, a debugger stop, a suspend) advances them
  // by this much only, so nothing leaps across the screen.
  static constexpr double kMaxActionStep = 0.25;

 private:
  friend class FrameDriver;

  // The frame's action phase at monotonic time `currentTime` (seconds).
  void evaluateActions(double currentTime);

  Size size_;
  Point anchorPoint_{0, 0};
  SceneScaleMode scaleMode_ = SceneScaleMode::Fill;
  std::unique_ptr<PhysicsWorld> physicsWorld_;
  std::optional<double> lastActionTime_;
};

}  // namespace kit
