#pragma once

#include <vector>

#include "game/game_scene.h"
#include "kit/foundation/geometry.h"
#include "kit/scene/node.h"

// A built-in player. Each frame it looks at the scene and says where it would
// tap: during a run it steers each car toward the nearest circle and away
// from the nearest rectangle of its two roads; on the home screen it presses
// play, and once the game-over screen is fully opaque it presses play again.
// It keeps no state and never draws random numbers, so it does not disturb a seeded
// game. Used by the scenario runner, the benchmark and a demo mode.
class Autoplayer {
 public:
  // The touches of one touch-began event for the next frame, in scene
  // points; empty when there is nothing to press.
  std::vector<kit::Point> touchesFor(const GameScene& scene) const;

  // The centre of a node's frame, in scene points (where a finger would press
  // a button).
  static kit::Point centreInScene(const kit::Node& node);

 private:
  // The carpos the car should head for, judged from the obstacles above it.
  static int targetCarpos(const GameScene& scene, const Car& car, int firstRoad);
};
