#pragma once

// The notifications the game posts and its host observes.
namespace notification {

// A run has ended and the score screen is up: time for an interstitial.
inline constexpr const char* kShowAd = "showad";
// The sound switch changed; the object is the new setting.
inline constexpr const char* kSoundChange = "soundchange";

}  // namespace notification
