#include "kit/scene/scene.h"

#include <algorithm>
#include <vector>

#include "kit/scene/action_run.h"

namespace kit {

Scene::Scene(Size size) : size_(size), physicsWorld_(std::make_unique<PhysicsWorld>(*this)) {}

Scene::~Scene() = default;

void Scene::touchesBegan(const TouchSet& touches, const Event* event) {
  (void)touches;
  (void)event;
}

void Scene::update(double currentTime) {
  (void)currentTime;
}

AffineTransform Scene::sceneToView(Size viewSize) const {
  const double w = size_.width, h = size_.height;
  double sx = 1, sy = 1;
  if (w > 0 && h > 0) {
    const double fx = viewSize.width / w, fy = viewSize.height / h;
    switch (scaleMode_) {
      case SceneScaleMode::Fill:
        sx = fx;
        sy = fy;
        break;
      case SceneScaleMode::AspectFill:
        sx = sy = std::max(fx, fy);
        break;
      case SceneScaleMode::AspectFit:
        sx = sy = std::min(fx, fy);
        break;
      case SceneScaleMode::ResizeFill:
        break;
    }
  }
  // The scene rectangle, scaled, is centred in the view; y flips.
  const double left = (viewSize.width - w * sx) * 0.5;
  const double top = (viewSize.height - h * sy) * 0.5;
  return {sx, 0, 0, -sy, left + anchorPoint_.x * w * sx, top + (h - anchorPoint_.y * h) * sy};
}

Point Scene::convertPointFromView(Point pointInView, Size viewSize) const {
  return sceneToView(viewSize).inverted().apply(pointInView);
}

Rect Scene::frame() const {
  return {{-anchorPoint_.x * size_.width, -anchorPoint_.y * size_.height}, size_};
}

void Scene::evaluateActions(double currentTime) {
  double dt = 0;
  if (lastActionTime_)
    dt = std::clamp(currentTime - *lastActionTime_, 0.0, kMaxActionStep);
  lastActionTime_ = currentTime;

  ActionContext context;
  std::vector<Node*> pending{this};
  while (!pending.empty()) {
    Node* node = pending.back();
    pending.pop_back();
    if (!node->actions_.empty())
      node->advanceActions(dt, context);
    for (auto it = node->children_.rbegin(); it != node->children_.rend(); ++it) {
      pending.push_back(it->get());
    }
  }
  // The walk is over: blocks may now change the tree and the actions.
  for (auto& due : context.due) {
    if (due.owner && due.owner->cancelled)
      continue;
    due.block();
  }
}

}  // namespace kit
