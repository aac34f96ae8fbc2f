#pragma once

#include <memory>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/foundation/run_loop.h"
#include "kit/scene/scene.h"
#include "kit/scene/touch.h"

namespace kit {

// Runs the presented scene one frame at a time. The window layer calls runFrame() once per display
// refresh; tests call it after moving a ManualClock. A frame, at the run loop clock's monotonic
// time t:
//   1. each queued touch-began event goes to scene.touchesBegan, in order;
//   2. the run loop's due timers fire (runLoop.runOnce());
//   3. scene.update(t);
//   4. actions advance; then the blocks that came due run (Node::runAction);
//   5. physics: bodies follow their nodes, the engine steps, contacts go to
//      the contact delegate (PhysicsWorld);
//   6. scene.didSimulatePhysics().
// Drawing (buildDrawList) comes after runFrame. The driver borrows the run
// loop, which must outlive it.
class FrameDriver {
 public:
  explicit FrameDriver(RunLoop& runLoop) : runLoop_(runLoop) {}
  FrameDriver(const FrameDriver&) = delete;
  FrameDriver& operator=(const FrameDriver&) = delete;

  // Replaces the presented scene from the next frame on.
  void presentScene(std::shared_ptr<Scene> scene) { scene_ = std::move(scene); }
  const std::shared_ptr<Scene>& scene() const { return scene_; }

  // Queues one touch-began event (several fingers that landed together), in
  // scene coordinates, for the next frame. Empty events are ignored.
  void touchesBegan(std::vector<Point> locationsInScene);

  void runFrame();

  // The current frame's time (seconds), as given to update.
  double currentTime() const;

 private:
  RunLoop& runLoop_;
  std::shared_ptr<Scene> scene_;
  std::vector<TouchSet> pendingTouches_;
};

}  // namespace kit
