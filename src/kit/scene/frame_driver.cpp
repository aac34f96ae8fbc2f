#include "kit/scene/frame_driver.h"

#include <utility>

namespace kit {

void FrameDriver::touchesBegan(std::vector<Point> locationsInScene) {
  if (locationsInScene.empty())
    return;
  std::vector<Touch> touches;
  touches.reserve(locationsInScene.size());
  for (Point p : locationsInScene)
    touches.emplace_back(p);
  pendingTouches_.emplace_back(std::move(touches));
}

double FrameDriver::currentTime() const {
  return static_cast<double>(runLoop_.clock().monotonicNanos()) /
         static_cast<double>(kNanosPerSecond);
}

void FrameDriver::runFrame() {
  // Held for the whole frame: a callback may present another scene.
  const std::shared_ptr<Scene> scene = scene_;
  const double now = currentTime();

  auto events = std::move(pendingTouches_);
  pendingTouches_.clear();
  if (scene) {
    const Event event{now};
    for (const auto& touches : events)
      scene->touchesBegan(touches, &event);
  }
  runLoop_.runOnce();
  if (!scene)
    return;
  scene->update(now);
  scene->evaluateActions(now);
  scene->physicsWorld().simulate();
  scene->didSimulatePhysics();
}

}  // namespace kit
