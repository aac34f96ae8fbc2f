// Pure pieces of the desktop layer: letterboxing, the opening scale, frame
// pacing, lifecycle order and the key map.
#include <SDL.h>
#include <gtest/gtest.h>

#include "kit/render/frame_pacer.h"
#include "kit/render/input_map.h"
#include "kit/render/lifecycle.h"
#include "kit/render/viewport.h"

namespace kit {
namespace {

using Call = Lifecycle::Call;

TEST(Viewport, AWiderWindowKeepsTheAspectWithBarsOnTheSides) {
  const Viewport v = Viewport::fit({320, 618}, {1000, 618}, 1);
  EXPECT_DOUBLE_EQ(v.scale, 1);
  EXPECT_DOUBLE_EQ(v.offset.x, 340);
  EXPECT_DOUBLE_EQ(v.offset.y, 0);
  const Point p = v.pointFromWindow({340 + 160, 309});
  EXPECT_DOUBLE_EQ(p.x, 160);
  EXPECT_DOUBLE_EQ(p.y, 309);
}

TEST(Viewport, HighDensityDrawsMorePixelsForTheSamePoints) {
  const Viewport v = Viewport::fit({320, 618}, {320, 618}, 2);
  EXPECT_DOUBLE_EQ(v.pixelsPerPoint(), 2);
  const Rect px = v.contentPixels();
  EXPECT_DOUBLE_EQ(px.size.width, 640);
  EXPECT_DOUBLE_EQ(px.size.height, 1236);
  // Mouse coordinates stay in window units: a click in the middle is the middle.
  EXPECT_DOUBLE_EQ(v.pointFromWindow({160, 309}).x, 160);
}

TEST(Viewport, ATallerWindowScalesToTheWidthAndCentresVertically) {
  const Viewport v = Viewport::fit({320, 618}, {640, 2000}, 1);
  EXPECT_DOUBLE_EQ(v.scale, 2);
  EXPECT_DOUBLE_EQ(v.offset.y, (2000 - 1236) / 2.0);
  EXPECT_DOUBLE_EQ(v.pointsToPixels().apply({0, 0}).y, v.offset.y);
}

TEST(Viewport, DegenerateSizesFallBackToOneToOne) {
  const Viewport v = Viewport::fit({320, 618}, {0, 0}, 0);
  EXPECT_DOUBLE_EQ(v.scale, 1);
  EXPECT_DOUBLE_EQ(v.density, 1);
}

TEST(OpeningScale, IsTheLargestQuarterStepThatFitsWithMargins) {
  EXPECT_DOUBLE_EQ(openingScale({320, 618}, {1024, 768}, 48), 1.0);    // 1.087 fits
  EXPECT_DOUBLE_EQ(openingScale({320, 618}, {1920, 1050}, 48), 1.5);   // 1.54
  EXPECT_DOUBLE_EQ(openingScale({320, 618}, {3840, 2110}, 48), 3.25);  // 3.26
  EXPECT_DOUBLE_EQ(openingScale({768, 1114}, {1024, 768}, 48), 0.5);   // 0.60
  EXPECT_DOUBLE_EQ(openingScale({768, 1114}, {100, 100}, 48), 0.25);   // never below
}

TEST(FramePacer, HoldsAFixedScheduleSoOversleepingIsMadeUp) {
  FramePacer pacer;
  pacer.setRefreshRate(50);
  ASSERT_EQ(pacer.period(), 20'000'000);
  // Frames take 3 ms; the first sets the schedule.
  EXPECT_EQ(pacer.sleepAfterFrame(1'003'000'000, 0), 20'000'000);  // next due at 1.023 s
  // That sleep overshot by 1 ms: the next one is shorter.
  EXPECT_EQ(pacer.sleepAfterFrame(1'027'000'000, 0), 16'000'000);
  EXPECT_EQ(pacer.sleepAfterFrame(1'046'000'000, 0), 17'000'000);
}

TEST(FramePacer, AnOverrunRestartsTheScheduleWithoutABurst) {
  FramePacer pacer;
  pacer.setRefreshRate(50);
  pacer.sleepAfterFrame(1'000'000'000, 0);                         // due 1.020
  EXPECT_EQ(pacer.sleepAfterFrame(1'090'000'000, 0), 0);           // a stall: on at once
  EXPECT_EQ(pacer.sleepAfterFrame(1'093'000'000, 0), 17'000'000);  // due 1.110
}

TEST(FramePacer, PresentingThatWaitsForTheDisplayLeavesNothingToWait) {
  FramePacer pacer;
  pacer.setRefreshRate(50);
  // Presents that waited 15 ms for the display.
  EXPECT_EQ(pacer.sleepAfterFrame(1'020'100'000, 15'000'000), 0);
  EXPECT_EQ(pacer.sleepAfterFrame(1'040'050'000, 15'000'000), 0);
  // A present that stops waiting (say, the window went to another display)
  // puts the pacer back on schedule.
  EXPECT_EQ(pacer.sleepAfterFrame(1'050'000'000, 100'000), 20'000'000);
  pacer.setRefreshRate(0);
  EXPECT_EQ(pacer.period(), FramePacer::kDefaultPeriod);
}

TEST(Lifecycle, MinimisingAndRestoringSendsTheCallsInThePlatformsOrder) {
  Lifecycle life;
  EXPECT_EQ(life.hidden(), (std::vector{Call::WillResignActive, Call::DidEnterBackground}));
  EXPECT_EQ(life.hidden(), std::vector<Call>{});
  EXPECT_EQ(life.shown(), (std::vector{Call::WillEnterForeground, Call::DidBecomeActive}));
  EXPECT_EQ(life.state(), Lifecycle::State::Active);
}

TEST(Lifecycle, FocusLossIsInactiveAndARestoreWithoutFocusWaitsForIt) {
  Lifecycle life;
  EXPECT_EQ(life.focusLost(), std::vector{Call::WillResignActive});
  EXPECT_EQ(life.focusLost(), std::vector<Call>{});
  EXPECT_EQ(life.hidden(), std::vector{Call::DidEnterBackground});
  EXPECT_EQ(life.shown(), std::vector{Call::WillEnterForeground});
  EXPECT_EQ(life.state(), Lifecycle::State::Inactive);
  EXPECT_EQ(life.focusGained(), std::vector{Call::DidBecomeActive});
  EXPECT_EQ(life.focusGained(), std::vector<Call>{});
}

TEST(Lifecycle, TerminatesOnceAndThenIgnoresTheWindow) {
  Lifecycle life;
  EXPECT_EQ(life.terminate(), std::vector{Call::WillTerminate});
  EXPECT_EQ(life.terminate(), std::vector<Call>{});
  EXPECT_EQ(life.hidden(), std::vector<Call>{});
  EXPECT_EQ(life.focusGained(), std::vector<Call>{});
}

TEST(InputMap, KeysForEachHalfThePrimaryButtonAndTheWindow) {
  EXPECT_EQ(actionForKey(SDLK_LEFT, 0), InputAction::TapLeft);
  EXPECT_EQ(actionForKey(SDLK_a, 0), InputAction::TapLeft);
  EXPECT_EQ(actionForKey(SDLK_RIGHT, 0), InputAction::TapRight);
  EXPECT_EQ(actionForKey(SDLK_d, 0), InputAction::TapRight);
  EXPECT_EQ(actionForKey(SDLK_l, 0), InputAction::TapRight);
  EXPECT_EQ(actionForKey(SDLK_SPACE, 0), InputAction::Primary);
  EXPECT_EQ(actionForKey(SDLK_RETURN, 0), InputAction::Primary);
  EXPECT_EQ(actionForKey(SDLK_ESCAPE, 0), InputAction::Quit);
  EXPECT_EQ(actionForKey(SDLK_F11, 0), InputAction::ToggleFullscreen);
  EXPECT_EQ(actionForKey(SDLK_x, 0), InputAction::None);
}

TEST(InputMap, AltEnterTogglesFullscreenAndNeverPressesPlay) {
  EXPECT_EQ(actionForKey(SDLK_RETURN, KMOD_LALT), InputAction::ToggleFullscreen);
  EXPECT_EQ(actionForKey(SDLK_KP_ENTER, KMOD_RALT), InputAction::ToggleFullscreen);
}

TEST(InputMap, PanelsGetTheirKeysButAltEnterStaysTheWindows) {
  EXPECT_EQ(keyForPanel(SDLK_ESCAPE, 0), Key::Escape);
  EXPECT_EQ(keyForPanel(SDLK_KP_ENTER, 0), Key::Return);
  EXPECT_EQ(keyForPanel(SDLK_TAB, KMOD_LSHIFT), Key::BackTab);
  EXPECT_EQ(keyForPanel(SDLK_RETURN, KMOD_LALT), std::nullopt);
  EXPECT_EQ(keyForPanel(SDLK_SPACE, 0), std::nullopt);
  EXPECT_EQ(keyForPanelFromController(SDL_CONTROLLER_BUTTON_B), Key::Escape);
}

TEST(InputMap, ControllerDpadShouldersAndFaceButtons) {
  EXPECT_EQ(actionForControllerButton(SDL_CONTROLLER_BUTTON_DPAD_LEFT), InputAction::TapLeft);
  EXPECT_EQ(actionForControllerButton(SDL_CONTROLLER_BUTTON_LEFTSHOULDER), InputAction::TapLeft);
  EXPECT_EQ(actionForControllerButton(SDL_CONTROLLER_BUTTON_RIGHTSHOULDER), InputAction::TapRight);
  EXPECT_EQ(actionForControllerButton(SDL_CONTROLLER_BUTTON_A), InputAction::Primary);
  EXPECT_EQ(actionForControllerButton(SDL_CONTROLLER_BUTTON_B), InputAction::None);
}

}  // namespace
}  // namespace kit
