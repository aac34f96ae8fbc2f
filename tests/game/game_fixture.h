#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "game/autoplayer.h"
#include "game/game_scene.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/scene/frame_driver.h"
#include "names/launch_defaults.h"

// Drives a GameScene on headless services at exactly 60 frames per second
// (frame k at k * 10^9 / 60 ns), with preferences in a private folder.
class GameTest : public ::testing::Test {
 protected:
  static constexpr kit::Size kPhone{320, 568};
  static constexpr kit::Size kPad{768, 1024};

  // Registers the defaults as the host does, then creates and presents the
  // scene (with a fixed seed, so every test is reproducible).
  GameScene& start(kit::Size size = kPhone, bool pad = false, unsigned seed = 1) {
    platform.device.userInterfaceIdiom = pad ? kit::Device::Idiom::Pad : kit::Device::Idiom::Phone;
    registerDefaultPreferences(platform.defaults);
    scene = GameScene::sceneWithSize(size, platform.services(), seed);
    driver.presentScene(scene);
    return *scene;
  }

  void frames(int count) {
    for (int i = 0; i < count; ++i) {
      platform.clock.advance(frame * kit::kNanosPerSecond / 60 - platform.clock.monotonicNanos());
      driver.runFrame();
      ++frame;
    }
  }
  void advance(double seconds) { frames(static_cast<int>(std::lround(seconds * 60))); }
  // Runs frames until `done` holds (checked before each frame); false if it
  // did not within `limit` frames.
  bool runUntil(const std::function<bool()>& done, int limit = 60 * 60) {
    for (int i = 0; i < limit && !done(); ++i)
      frames(1);
    return done();
  }

  // One touch-began event, delivered at the next frame.
  void tap(std::vector<kit::Point> touches) { driver.touchesBegan(std::move(touches)); }
  void tap(double x, double y) { tap({{x, y}}); }
  void tapButton(const kit::Node& button) { tap({Autoplayer::centreInScene(button)}); }

  // Presses play and lets the 0.1 s fade end, so that the run has begun.
  void play() {
    tapButton(scene->playBtn());
    frames(7);
    ASSERT_TRUE(scene->startFlag());
  }

  static constexpr ObstacleKind kCircle = ObstacleKind::Circle;
  static constexpr ObstacleKind kRect = ObstacleKind::Rectangle;

  // Spawns in `road` with rand() seeded so that the spawn's first draw gives
  // `kind`: the seed is searched for, not guessed.
  std::shared_ptr<Obstacle> spawn(int road, ObstacleKind kind) {
    unsigned seed = 1;
    kit::RandomSource& random = platform.random;
    for (random.seed(seed); random.next() % 2 != static_cast<int>(kind); random.seed(++seed)) {
    }
    random.seed(seed);
    scene->addObstacleInRoadIdx(road);
    return scene->allObstacle().back();
  }

  // Scores `count` points at once: that many circles dropped onto the left
  // car, collected within a frame or two.
  void collect(int count) {
    const int target = scene->score() + count;
    const int road = scene->leftCar().carpos() + 1;
    for (int i = 0; i < count; ++i)
      spawn(road, kCircle)->setPosition(scene->leftCar().position());
    ASSERT_TRUE(runUntil([&] { return scene->score() == target; }, 5));
  }

  kit::TempDir prefs{"twinlanes-game-test"};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  kit::FrameDriver driver{platform.runLoop};
  std::shared_ptr<GameScene> scene;
  int64_t frame = 0;
};
