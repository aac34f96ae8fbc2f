// Pure pieces of the desktop layer: letterboxing, the opening scale, frame
// pacing and the key map.
#include <SDL.h>
#include <gtest/gtest.h>

#include "kit/backends/desktop/sdl_keys.h"
#include "kit/render/frame_pacer.h"
#include "kit/render/input_map.h"
#include "kit/render/viewport.h"

namespace kit {
namespace {

// The map as the desktop window feeds it: SDL's codes made portable first.
InputAction actionForSdlKey(int32_t keycode, uint16_t modifiers) {
  return actionForKey(platformKeyFromSdl(keycode), modifiersFromSdl(modifiers));
}
InputAction actionForSdlButton(int button) {
  return actionForControllerButton(padButtonFromSdl(button));
}
std::optional<Key> keyForSdlPanel(int32_t keycode, uint16_t modifiers) {
  return keyForPanel(platformKeyFromSdl(keycode), modifiersFromSdl(modifiers));
}
std::optional<Key> keyForSdlButton(int button) {
  return keyForPanelFromController(padButtonFromSdl(button));
}

TEST(Viewport, KeepsTheAspectWithBarsAndMapsWindowPointsBack) {
  const Viewport wide = Viewport::fit({320, 618}, {1000, 618}, 1);
  EXPECT_DOUBLE_EQ(wide.scale, 1);
  EXPECT_DOUBLE_EQ(wide.offset.x, 340);
  EXPECT_DOUBLE_EQ(wide.pointFromWindow({340 + 160, 309}).x, 160);

  const Viewport tall = Viewport::fit({320, 618}, {640, 2000}, 1);
  EXPECT_DOUBLE_EQ(tall.scale, 2);
  EXPECT_DOUBLE_EQ(tall.offset.y, (2000 - 1236) / 2.0);
  EXPECT_DOUBLE_EQ(tall.pointsToPixels().apply({0, 0}).y, tall.offset.y);

  // High density draws more pixels, but mouse coordinates stay in window units.
  const Viewport dense = Viewport::fit({320, 618}, {320, 618}, 2);
  EXPECT_DOUBLE_EQ(dense.contentPixels().size.width, 640);
  EXPECT_DOUBLE_EQ(dense.pointFromWindow({160, 309}).x, 160);

  const Viewport degenerate = Viewport::fit({320, 618}, {0, 0}, 0);
  EXPECT_DOUBLE_EQ(degenerate.scale, 1);
  EXPECT_DOUBLE_EQ(degenerate.density, 1);
}

TEST(OpeningScale, IsTheLargestQuarterStepThatFitsWithMargins) {
  EXPECT_DOUBLE_EQ(openingScale({320, 618}, {1024, 768}, 48), 1.0);    // 1.087 fits
  EXPECT_DOUBLE_EQ(openingScale({320, 618}, {3840, 2110}, 48), 3.25);  // 3.26
  EXPECT_DOUBLE_EQ(openingScale({768, 1114}, {1024, 768}, 48), 0.5);   // 0.60
  EXPECT_DOUBLE_EQ(openingScale({768, 1114}, {100, 100}, 48), 0.25);   // never below
}

TEST(FramePacer, HoldsAFixedScheduleSoOversleepingIsMadeUpAndOverrunsRestartIt) {
  FramePacer pacer;
  pacer.setRefreshRate(50);
  ASSERT_EQ(pacer.period(), 20'000'000);
  // Frames take 3 ms; the first sets the schedule.
  EXPECT_EQ(pacer.sleepAfterFrame(1'003'000'000, 0), 20'000'000);  // next due at 1.023 s
  // That sleep overshot by 1 ms: the next one is shorter.
  EXPECT_EQ(pacer.sleepAfterFrame(1'027'000'000, 0), 16'000'000);
  // A stall: on at once, then a fresh schedule without a burst.
  EXPECT_EQ(pacer.sleepAfterFrame(1'090'000'000, 0), 0);
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

TEST(InputMap, KeysAndControllerButtonsMapToHalvesPrimaryAndWindowActions) {
  EXPECT_EQ(actionForSdlKey(SDLK_d, 0), InputAction::TapRight);
  EXPECT_EQ(actionForSdlKey(SDLK_F11, 0), InputAction::ToggleFullscreen);
  EXPECT_EQ(actionForSdlKey(SDLK_x, 0), InputAction::None);
  // Alt+Enter toggles fullscreen and never presses play.
  EXPECT_EQ(actionForSdlKey(SDLK_KP_ENTER, KMOD_RALT), InputAction::ToggleFullscreen);
  EXPECT_EQ(actionForSdlButton(SDL_CONTROLLER_BUTTON_LEFTSHOULDER), InputAction::TapLeft);
  EXPECT_EQ(actionForSdlButton(SDL_CONTROLLER_BUTTON_A), InputAction::Primary);
  EXPECT_EQ(actionForSdlButton(SDL_CONTROLLER_BUTTON_B), InputAction::None);
}

TEST(InputMap, PanelsGetTheirKeysButAltEnterStaysTheWindows) {
  EXPECT_EQ(keyForSdlPanel(SDLK_TAB, KMOD_LSHIFT), Key::BackTab);
  EXPECT_EQ(keyForSdlPanel(SDLK_RETURN, KMOD_LALT), std::nullopt);
  EXPECT_EQ(keyForSdlButton(SDL_CONTROLLER_BUTTON_B), Key::Escape);
}

}  // namespace
}  // namespace kit
