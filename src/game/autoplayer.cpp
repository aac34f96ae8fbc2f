#include "game/autoplayer.h"

#include <cmath>
#include <memory>

namespace {

// Which road (0 to 3, from the left) an obstacle falls in: obstacles keep the
// x of their road's centre.
int roadOf(const Obstacle& obstacle, double width) {
  const double road = std::floor(obstacle.position().x / (width * 0.25));
  return road < 0 ? 0 : road > 3 ? 3 : static_cast<int>(road);
}

// Ready for a tap: fully up and not already fading.
bool settled(const kit::Node& layer) {
  return layer.alpha() == 1.0 && !layer.hasActions();
}

}  // namespace

kit::Point Autoplayer::centreInScene(const kit::Node& node) {
  const kit::Rect frame = node.frame();
  const kit::Point centre{frame.midX(), frame.midY()};
  return node.parent() ? node.parent()->sceneTransform().apply(centre) : centre;
}

int Autoplayer::targetCarpos(const GameScene& scene, const Car& car, int firstRoad) {
  const double width = scene.size().width;
  const double carBottom = car.position().y - car.size().height * 0.5;

  // The next obstacle of each of the car's roads: the lowest one whose top
  // edge is still above the car's lower edge.
  const Obstacle* next[2] = {nullptr, nullptr};
  for (const auto& obstacle : scene.allObstacle()) {
    const int lane = roadOf(*obstacle, width) - firstRoad;
    if (lane < 0 || lane > 1)
      continue;
    if (obstacle->position().y + obstacle->size().height * 0.5 <= carBottom)
      continue;
    if (!next[lane] || obstacle->position().y < next[lane]->position().y)
      next[lane] = obstacle.get();
  }

  // The nearer threat decides; at equal height a circle counts first, and
  // between equals the car stays where it is.
  const int here = car.carpos();
  const int there = 1 - here;
  auto before = [](const Obstacle* a, const Obstacle* b) {
    if (!b)
      return a != nullptr;
    if (!a)
      return false;
    if (a->position().y != b->position().y)
      return a->position().y < b->position().y;
    return a->type() == ObstacleKind::Circle && b->type() != ObstacleKind::Circle;
  };
  int nearest;
  if (before(next[there], next[here])) {
    nearest = there;
  } else if (next[here]) {
    nearest = here;
  } else {
    return here;
  }
  return next[nearest]->type() == ObstacleKind::Circle ? nearest : 1 - nearest;
}

std::vector<kit::Point> Autoplayer::touchesFor(const GameScene& scene) const {
  const double width = scene.size().width, height = scene.size().height;
  const bool homeButtons =
      (!scene.startFlag() && !scene.overFlag()) || (scene.homeFlag() && scene.overFlag());
  if (homeButtons) {
    if (settled(scene.homeLayer()))
      return {centreInScene(scene.playBtn())};
    return {};
  }
  if (scene.overFlag()) {
    if (settled(scene.overLayer()))
      return {centreInScene(scene.againBtn())};
    return {};
  }

  std::vector<kit::Point> touches;
  // A car still changing lanes is left to finish: its carpos already names
  // where it is going.
  const Car& left = scene.leftCar();
  if (!left.hasActions() && targetCarpos(scene, left, 0) != left.carpos()) {
    touches.push_back({width * 0.25, height * 0.5});
  }
  const Car& right = scene.rightCar();
  if (!right.hasActions() && targetCarpos(scene, right, 2) != right.carpos()) {
    touches.push_back({width * 0.75, height * 0.5});
  }
  return touches;
}
