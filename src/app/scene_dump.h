#pragma once

#include "game/game_scene.h"
#include "kit/foundation/value.h"

// The game scene's state as one dictionary, for the scenario runner's dump:
// flags, score, per-road counters, cars, obstacles (in allObstacle order),
// the latest spawn of each road, overlay alphas, label texts, crash sprites
// and lane lines. Reals are the scene's own doubles, unrounded.
kit::Value::Dictionary describeScene(const GameScene& scene);
