// A run from the home screen to game over and the next run: the screens, the
// best score, and the notifications the host listens to.

#include <filesystem>

#include "game_fixture.h"
#include "kit/backends/files/file_preference_store.h"
#include "names/notification_names.h"
#include "names/preference_keys.h"

class Flow : public GameTest {
 protected:
  // Ends the run in progress by a rectangle hitting the left car, with `score`.
  void crashWithScore(int score) {
    scene->enableTimer(false);
    collect(score);
    spawn(1, kRect);
    ASSERT_TRUE(runUntil([&] { return scene->overFlag(); }, 180));
  }
  void untilOverScreenIsUp() {
    ASSERT_TRUE(runUntil([&] { return scene->overLayer().alpha() == 1.0; }, 60));
  }
  std::filesystem::path prefsFile() const { return prefs.path() / "prefs.json"; }
};

TEST_F(Flow, PlayStartsTheRunWhenItsFadeEnds) {
  GameScene& s = start();
  tapButton(s.playBtn());
  frames(6);
  EXPECT_FALSE(s.startFlag());  // the flags change only in the fade's completion
  EXPECT_EQ(s.timer().fireDate(), kit::Timer::kDistantFuture);
  frames(1);
  EXPECT_TRUE(s.startFlag());
  EXPECT_NE(s.timer().fireDate(), kit::Timer::kDistantFuture);
}

TEST_F(Flow, TheLinesScrollOneSceneHeightAtTheRoadsSpeedThenJumpBack) {
  GameScene& s = start();
  play();
  frames(1);  // the scrolling starts in the next frame
  advance(1.1);
  EXPECT_NEAR(s.leftLineNode().position().y, 568 - 284, 1e-6);
  advance(1.1);
  EXPECT_NEAR(s.leftLineNode().position().y, 568, 1e-6);  // and jumps back
}

TEST_F(Flow, GameOverFreezesTheWorld) {
  GameScene& s = start();
  play();
  advance(1.5);  // a few obstacles on their way down
  ASSERT_FALSE(s.allObstacle().empty());
  crashWithScore(3);
  EXPECT_EQ(s.timer().fireDate(), kit::Timer::kDistantFuture);
  for (const auto& obstacle : s.allObstacle())
    EXPECT_FALSE(obstacle->hasActions());
  EXPECT_FALSE(s.leftLineNode().hasActions());
  EXPECT_FALSE(s.rightCar().hasActions());
}

TEST_F(Flow, TheScoreScreenFadesInWithTheRunsScoreThenOneAdIsAskedFor) {
  GameScene& s = start();
  play();
  crashWithScore(3);
  EXPECT_EQ(s.overLayer().alpha(), 0);
  untilOverScreenIsUp();
  EXPECT_EQ(s.overScoreNode().text(), "3");
  advance(3);
  EXPECT_EQ(platform.notifications.postCount(notification::kShowAd), 1u);
}

TEST_F(Flow, TheScoreScreenIgnoresTapsUntilOpaqueThenPlayAgainStartsAFreshRun) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  auto rect = spawn(2, kRect);  // the left car swerves into it, caught between roads
  ASSERT_TRUE(runUntil([&] { return rect->position().y < 120; }, 180));
  tap(100, 100);
  ASSERT_TRUE(runUntil([&] { return s.overFlag(); }, 10));
  EXPECT_TRUE(s.leftCar().position().x > 40 && s.leftCar().position().x < 120);

  tapButton(s.againBtn());
  advance(0.5);
  EXPECT_FALSE(s.startFlag());
  untilOverScreenIsUp();
  tapButton(s.againBtn());
  frames(7);
  EXPECT_TRUE(s.startFlag() && !s.overFlag() && s.obstacleLayer().children().empty());
  EXPECT_EQ(s.leftCar().position(), (kit::Point{40, 92}));
  EXPECT_EQ(s.leftCar().carpos() + s.leftCar().zRotation(), 0);
  EXPECT_TRUE(s.leftSmoke().hidden() && !s.leftSmoke().hasActions());
  EXPECT_EQ(s.scoreNode().text(), "0");
}

TEST_F(Flow, OnlyAScoreAboveTheBestIsARecordAndOnlyARecordIsWritten) {
  platform.defaults.setInteger(5, prefkey::kBest);
  for (int score : {5, 6}) {
    std::filesystem::remove(prefsFile());
    start();
    play();
    crashWithScore(score);
    EXPECT_EQ(scene->overBestNode().text(), score > 5 ? "新记录" : "记 录 : 5") << score;
    // A record is synchronised at once; anything else writes nothing.
    kit::CapturingLog log;
    kit::FilePreferenceStore saved(prefs.path(), log);
    EXPECT_EQ(kit::UserDefaults(saved, log).integerForKey(prefkey::kBest), score > 5 ? 6 : 0);
  }
}

TEST_F(Flow, TwoGameOversInOneFrameCountAsOne) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  auto circle = spawn(2, kCircle);
  collect(3);
  s.gameOver({40, 100}, 0, nullptr);  // a crash ...
  s.gameOver({0, 0}, 1, circle);      // ... and a let-through in the same frame
  EXPECT_EQ(platform.defaults.integerForKey(prefkey::kBest), 3);
  EXPECT_EQ(s.overScoreNode().text(), "3");
  EXPECT_EQ(s.leftSmoke().position(), (kit::Point{40, 100}));
  EXPECT_FALSE(circle->hasActions());  // no blink
  advance(2);
  EXPECT_EQ(platform.notifications.postCount(notification::kShowAd), 1u);
}

TEST_F(Flow, TwoQuickPlayTapsStartTwoRunsAndTheLinesScrollTwiceAsFast) {
  GameScene& s = start();
  tapButton(s.playBtn());
  frames(2);
  tapButton(s.playBtn());
  frames(7);  // both fades have ended, the second newGame two frames after the first
  ASSERT_EQ(s.leftLineNode().actionCount(), 2u);
  s.enableTimer(false);
  advance(1.1);
  // The first scroll ran one frame before the line was put back, the second
  // started a frame later: 66 + 65 frames of movement, about a whole height.
  EXPECT_NEAR(s.leftLineNode().position().y, 568 - 131 * (568 / 2.2 / 60), 1e-6);
}

TEST_F(Flow, TheBuiltInPlayerPlaysSeededGamesRunAfterRunPressingPlayAgainOnlyWhenItIsUp) {
  GameScene& s = start(kPhone, false, 2024);
  int runs = 0, best = 0;
  bool wasOver = false;
  for (int i = 0; i < 60 * 120; ++i) {
    auto t = Autoplayer().touchesFor(s);
    EXPECT_TRUE(!s.overFlag() || t.empty() || s.overLayer().alpha() == 1.0);
    if (!t.empty())
      tap(t);
    frames(1);
    runs += s.overFlag() && !wasOver;
    wasOver = s.overFlag();
    best = std::max(best, s.score());
  }
  EXPECT_GE(runs, 2);
  EXPECT_GE(best, 10);
  EXPECT_EQ(platform.defaults.integerForKey(prefkey::kBest), best);
}
