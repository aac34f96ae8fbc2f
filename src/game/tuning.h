#pragma once

// The game's tuning numbers in one place, each with its unit. Sizes are
// fractions of the scene (or of a road) so that every screen plays alike;
// the scene code multiplies them in the order written here.
namespace tuning {

// --- Roads and sizes -----------------------------------------------------------------
inline constexpr double kRoadWidth = 0.25;       // of the scene width; four roads
inline constexpr double kHalfRoadWidth = 0.125;  // of the scene width; a road's centre
inline constexpr double kCarWidth = 0.7;         // of a road's width
inline constexpr double kCarAspect = 0.75;       // height / width
inline constexpr double kCarLiftPhone = 50;      // points from the bottom edge to the car's
inline constexpr double kCarLiftPad = 90;        // lower edge plus half its height
inline constexpr double kObstacleWidth = 0.6;    // of a road's width
inline constexpr double kObstacleAspect = 0.65;  // height / width
inline constexpr double kRectangleGap = 1.8;     // car heights between partner rectangles
inline constexpr double kHitWidth = 0.7;         // of a sprite's width: car and rectangle bodies
inline constexpr double kHitHeight = 0.94;       // of a sprite's height

// --- Speeds and times ----------------------------------------------------------------
inline constexpr double kSceneFallSeconds = 2.2;    // s to fall (or scroll) one scene height
inline constexpr double kLaneChangeSeconds = 0.1;   // s for a car to move one road
inline constexpr double kStartFadeSeconds = 0.1;    // s the screen fades before a run
inline constexpr double kHomeFadeSeconds = 0.1;     // s the home screen takes to come back
inline constexpr double kOverDelaySeconds = 0.5;    // s from the crash to the score screen
inline constexpr double kOverFadeSeconds = 0.3;     // s the score screen takes to fade in
inline constexpr double kBlinkSeconds = 0.125;      // s per half-blink of a let-through circle
inline constexpr double kFlameFrameSeconds = 0.15;  // s per frame of the crash flames

// --- Spawn rhythm ----------------------------------------------------------------------
inline constexpr double kSpawnTickSeconds = 0.1;  // s between spawn-timer ticks
inline constexpr int kFirstSpawnTick = 10;        // ticks: a road spawns again after
inline constexpr int kSpawnTickChoices = 10;      // 10 to 19 ticks, drawn at random

}  // namespace tuning
