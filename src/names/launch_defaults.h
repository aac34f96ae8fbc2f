#pragma once

#include "kit/foundation/user_defaults.h"

// Registers the game's default preferences: "best" 0, "first" YES, "sound"
// YES, "cnt" 0. Nothing is written.
void registerDefaultPreferences(kit::UserDefaults& defaults);

// What every launch does to the preferences before the scene exists: the
// defaults above, then "first" YES and "cnt" 0 written and synchronised, so
// that each launch counts its game overs afresh.
void registerLaunchDefaults(kit::UserDefaults& defaults);
