// A run from the home screen to game over and the next run: the screens, the
// best score, and the notifications the host listens to.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "game_fixture.h"

class Flow : public GameTest {
 protected:
  // Ends the run in progress by a rectangle hitting the left car, with `score`.
  void crashWithScore(int score) {
    scene->enableTimer(false);
    scene->_score = score;
    spawn(1, 1);
    ASSERT_TRUE(runUntil([&] { return scene->overFlag; }, 180));
  }
  void untilOverScreenIsUp() {
    ASSERT_TRUE(runUntil([&] { return scene->overLayer->alpha() == 1.0; }, 60));
  }
  std::filesystem::path prefsFile() const { return prefs.path() / "prefs.json"; }
};

TEST_F(Flow, PlayStartsTheRunWhenItsFadeEndsAndTheLinesScrollWithTheRoad) {
  GameScene& s = start();
  tapButton(*s.playBtn);
  frames(6);
  EXPECT_FALSE(s.startFlag);  // the flags change only in the fade's completion
  EXPECT_EQ(s._timer->fireDate(), kit::Timer::kDistantFuture);
  frames(1);
  EXPECT_TRUE(s.startFlag);
  EXPECT_EQ(s.homeLayer->alpha(), 0);
  EXPECT_NE(s._timer->fireDate(), kit::Timer::kDistantFuture);

  frames(1);  // the scrolling starts in the next frame
  advance(1.1);
  EXPECT_NEAR(s.leftLineNode->position().y, 568 - 284, 1e-6);
  advance(1.1);
  EXPECT_NEAR(s.leftLineNode->position().y, 568, 1e-6);  // and jumps back
}

TEST_F(Flow, GameOverFreezesTheWorldThenFadesTheScoreScreenInAndAsksForAnAdOnce) {
  GameScene& s = start();
  play();
  advance(1.5);  // a few obstacles on their way down
  crashWithScore(3);
  EXPECT_FALSE(s.startFlag);
  EXPECT_EQ(s._timer->fireDate(), kit::Timer::kDistantFuture);
  for (const auto& obstacle : s.allObstacle)
    EXPECT_FALSE(obstacle->hasActions());
  EXPECT_FALSE(s.leftLineNode->hasActions() || s.rightLineNode->hasActions());

  advance(0.5);
  EXPECT_EQ(s.overLayer->alpha(), 0);
  advance(0.25);
  EXPECT_GT(s.overLayer->alpha(), 0);
  EXPECT_EQ(platform.notifications.postCount("showad"), 0u);
  untilOverScreenIsUp();
  EXPECT_EQ(platform.notifications.postCount("showad"), 1u);
  EXPECT_EQ(s.overScoreNode->text(), "3");
  advance(3);
  EXPECT_EQ(platform.notifications.postCount("showad"), 1u);
}

TEST_F(Flow, TheScoreScreenIgnoresTapsUntilOpaqueThenPlayAgainStartsAFreshRun) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  auto rect = spawn(2, 1);  // the left car swerves into it, caught between roads
  ASSERT_TRUE(runUntil([&] { return rect->position().y < 120; }, 180));
  tap(100, 100);
  ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 10));
  EXPECT_TRUE(s.leftCar->position().x > 40 && s.leftCar->position().x < 120);

  tapButton(*s.againBtn);
  advance(0.5);
  EXPECT_FALSE(s.startFlag);
  untilOverScreenIsUp();
  tapButton(*s.againBtn);
  frames(7);
  EXPECT_TRUE(s.startFlag && !s.overFlag);
  EXPECT_TRUE(s.allObstacle.empty() && s.obstacleLayer->children().empty());
  EXPECT_EQ(s.leftCar->position(), (kit::Point{40, 92}));
  EXPECT_EQ(s.leftCar->zRotation(), 0);
  EXPECT_EQ(s.leftCar->carpos(), 0);
  EXPECT_EQ(s.rightCar->carpos(), 1);
  EXPECT_TRUE(s.leftSmoke->hidden() && !s.leftSmoke->hasActions());
  EXPECT_EQ(s.scoreNode->text(), "0");
  EXPECT_FALSE(s.lastnode1 || s.lastnode2 || s.lastnode3 || s.lastnode4);
}

TEST_F(Flow, OnlyAScoreAboveTheBestIsARecordAndOnlyARecordIsWritten) {
  struct Case {
    int best, score;
    std::string text;
  };
  for (const Case& c : {Case{5, 2, "记 录 : 5"}, Case{5, 5, "记 录 : 5"}, Case{5, 6, "新记录"}}) {
    platform.defaults.setInteger(c.best, "best");
    platform.defaults.synchronize();
    std::filesystem::remove(prefsFile());
    start();
    play();
    crashWithScore(c.score);
    EXPECT_EQ(scene->overBestNode->text(), c.text) << c.score;
    // A record is synchronised at once; anything else writes nothing.
    EXPECT_EQ(std::filesystem::exists(prefsFile()), c.score > c.best) << c.score;
    kit::CapturingLog log;
    EXPECT_EQ(kit::UserDefaults(prefs.path(), log).integerForKey("best"),
              c.score > c.best ? c.score : 0);
  }
}

TEST_F(Flow, TwoGameOversInOneFrameCountAsOne) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  auto circle = spawn(2, 0);
  s._score = 3;
  s.gameOver({40, 100}, 0, nullptr);  // a crash ...
  s._score = 7;
  s.gameOver({0, 0}, 1, circle);  // ... and a let-through in the same frame
  EXPECT_EQ(platform.defaults.integerForKey("best"), 3);
  EXPECT_EQ(s.overScoreNode->text(), "3");
  EXPECT_EQ(s.leftSmoke->position(), (kit::Point{40, 100}));
  EXPECT_TRUE(s.rightSmoke->hidden());
  EXPECT_FALSE(circle->hasActions());  // no blink
  advance(2);
  EXPECT_EQ(platform.notifications.postCount("showad"), 1u);
}

TEST_F(Flow, TwoQuickPlayTapsStartTwoRunsAndTheLinesScrollTwiceAsFast) {
  GameScene& s = start();
  tapButton(*s.playBtn);
  frames(2);
  tapButton(*s.playBtn);
  frames(7);  // both fades have ended, the second newGame two frames after the first
  ASSERT_EQ(s.leftLineNode->actionCount(), 2u);
  ASSERT_EQ(s.rightLineNode->actionCount(), 2u);
  s.enableTimer(false);
  advance(1.1);
  // The first scroll ran one frame before the line was put back, the second
  // started a frame later: 66 + 65 frames of movement, about a whole height.
  EXPECT_NEAR(s.leftLineNode->position().y, 568 - 131 * (568 / 2.2 / 60), 1e-6);
}

TEST_F(Flow, TheSoundSwitchIsStoredAndAnnouncedButNotSynchronised) {
  GameScene& s = start();
  std::vector<kit::Value> announced;
  platform.notifications.addObserver(this, "soundchange", [&](const kit::Notification& note) {
    announced.push_back(note.object);
  });
  s.toggleSound();
  EXPECT_FALSE(s.soundFlag);
  EXPECT_FALSE(platform.defaults.boolForKey("sound"));
  EXPECT_FALSE(std::filesystem::exists(prefsFile()));
  s.toggleSound();
  EXPECT_EQ(announced, (std::vector<kit::Value>{kit::Value(false), kit::Value(true)}));
  platform.notifications.removeObserver(this);
}

TEST_F(Flow, GoingHomeFromTheScoreScreenRoutesTapsToTheHomeButtons) {
  GameScene& s = start();
  play();
  crashWithScore(1);
  untilOverScreenIsUp();
  s.goHome();
  EXPECT_EQ(s.overLayer->alpha(), 0);
  frames(7);
  EXPECT_EQ(s.homeLayer->alpha(), 1.0);
  EXPECT_TRUE(s.homeFlag && s.overFlag);
  tap(300, 50);  // no button, and no steering
  frames(7);
  EXPECT_EQ(s.rightCar->carpos(), 1);
  tapButton(*s.playBtn);
  frames(7);
  EXPECT_TRUE(s.startFlag && !s.homeFlag);
}

TEST_F(Flow, RateUsOpensTheGamesStorePage) {
  start().rateUs();
  const std::string host = *platform.bundle.infoValue("storeHost").stringValue();
  const int64_t id = platform.bundle.infoValue("appStoreId").integerValue();
  ASSERT_TRUE(!host.empty() && id > 0);
  EXPECT_EQ(platform.urlOpener.opened,
            (std::vector<std::string>{"itms-apps://" + host + "/app/id" +
                                      std::to_string(static_cast<int32_t>(id))}));
}
