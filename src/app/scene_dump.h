#pragma once

#include "game/game_scene.h"
#include "kit/foundation/value.h"

namespace kit {
class Application;
}

// The game scene's state as one dictionary, for the scenario runner's dump:
// flags, score, per-road counters, cars, obstacles (in allObstacle order),
// the latest spawn of each road, overlay alphas, label texts, crash sprites
// and lane lines. Reals are the scene's own doubles, unrounded.
kit::Value::Dictionary describeScene(const GameScene& scene);

// The alert on the application's window: null, or its title, message,
// buttons and tag. `app` may be null (no application: null).
kit::Value describeAlert(const kit::Application* app);
// The texts of the toasts up on the game's view, in view order.
kit::Value::Array describeToasts(const kit::Application* app);
