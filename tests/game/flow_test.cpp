// A run from the home screen to game over and the next run: the screens, the
// best score, and the notifications the host listens to.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "game_fixture.h"

class Flow : public GameTest {
 protected:
  // Plays a run that ends by crashing into a rectangle with `score` points.
  void crashWithScore(int score) {
    GameScene& s = *scene;
    s.enableTimer(false);
    s._score = score;
    spawn(1, 1);
    ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 180));
  }
  // Lets the game-over screen finish fading in.
  void untilOverScreenIsUp() {
    ASSERT_TRUE(runUntil([&] { return scene->overLayer->alpha() == 1.0; }, 60));
  }
  std::filesystem::path prefsFile() const { return prefs.path() / "prefs.json"; }
};

TEST_F(Flow, PlayFadesTheHomeScreenAndTheRunBeginsWhenTheFadeEnds) {
  GameScene& s = start();
  tapButton(*s.playBtn);
  frames(6);
  EXPECT_FALSE(s.startFlag);  // the flags change only in the fade's completion
  EXPECT_LT(s.homeLayer->alpha(), 1.0);
  EXPECT_EQ(s._timer->fireDate(), kit::Timer::kDistantFuture);
  frames(1);
  EXPECT_TRUE(s.startFlag);
  EXPECT_FALSE(s.overFlag);
  EXPECT_EQ(s.homeLayer->alpha(), 0);
  EXPECT_NE(s._timer->fireDate(), kit::Timer::kDistantFuture);

  // The lines scroll one scene height per 2.2 s, from the next frame on, and
  // jump back.
  frames(1);
  const double y = s.leftLineNode->position().y;
  advance(1.1);
  EXPECT_NEAR(s.leftLineNode->position().y, y - 284, 1e-6);
  advance(1.1);
  EXPECT_NEAR(s.leftLineNode->position().y, y, 1e-6);
}

TEST_F(Flow, GameOverFreezesTheWorldAndFadesTheScoreScreenInThenAsksForAnAd) {
  GameScene& s = start();
  play();
  s.enableTimer(true);
  advance(1.5);  // a few obstacles on their way down
  crashWithScore(3);
  EXPECT_FALSE(s.startFlag);
  EXPECT_EQ(s._timer->fireDate(), kit::Timer::kDistantFuture);
  for (const auto& obstacle : s.allObstacle)
    EXPECT_FALSE(obstacle->hasActions());
  EXPECT_FALSE(s.leftLineNode->hasActions());
  EXPECT_FALSE(s.rightLineNode->hasActions());
  const auto count = s.allObstacle.size();
  const double lineY = s.leftLineNode->position().y;

  // 0.5 s of nothing, then a 0.3 s fade; "showad" exactly when it is up.
  advance(0.5);
  EXPECT_EQ(s.overLayer->alpha(), 0);
  advance(0.25);
  EXPECT_GT(s.overLayer->alpha(), 0);
  EXPECT_LT(s.overLayer->alpha(), 1.0);
  EXPECT_EQ(platform.notifications.postCount("showad"), 0u);
  untilOverScreenIsUp();
  EXPECT_EQ(platform.notifications.postCount("showad"), 1u);
  EXPECT_EQ(s.overScoreNode->text(), "3");

  advance(3);
  EXPECT_EQ(platform.notifications.postCount("showad"), 1u);
  EXPECT_EQ(s.allObstacle.size(), count);
  EXPECT_EQ(s.leftLineNode->position().y, lineY);
}

TEST_F(Flow, TheScoreScreenIgnoresTapsUntilFullyOpaqueThenPlayAgainStartsAFreshRun) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  s._score = 2;
  // The left car swerves into a rectangle and is caught between roads.
  auto rect = spawn(2, 1);
  ASSERT_TRUE(runUntil([&] { return rect->position().y < 120; }, 180));
  tap(100, 100);
  ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 10));
  EXPECT_GT(s.leftCar->position().x, 40);
  EXPECT_LT(s.leftCar->position().x, 120);
  EXPECT_NE(s.leftCar->zRotation(), 0);

  tapButton(*s.againBtn);
  advance(0.5);
  EXPECT_TRUE(s.overFlag);
  EXPECT_FALSE(s.startFlag);

  untilOverScreenIsUp();
  tapButton(*s.againBtn);
  frames(7);
  EXPECT_TRUE(s.startFlag);
  EXPECT_FALSE(s.overFlag);
  EXPECT_EQ(s.overLayer->alpha(), 0);
  EXPECT_TRUE(s.allObstacle.empty());
  EXPECT_TRUE(s.obstacleLayer->children().empty());
  EXPECT_EQ(s.leftCar->position(), (kit::Point{40, 92}));
  EXPECT_EQ(s.rightCar->position(), (kit::Point{280, 92}));
  EXPECT_EQ(s.leftCar->zRotation(), 0);
  EXPECT_EQ(s.leftCar->carpos(), 0);
  EXPECT_EQ(s.rightCar->carpos(), 1);
  EXPECT_TRUE(s.leftSmoke->hidden());
  EXPECT_FALSE(s.leftSmoke->hasActions());
  EXPECT_EQ(s._score, 0);
  EXPECT_EQ(s.scoreNode->text(), "0");
  EXPECT_FALSE(s.lastnode1 || s.lastnode2 || s.lastnode3 || s.lastnode4);
  EXPECT_EQ(s.tickcnt1 + s.tickcnt2 + s.tickcnt3 + s.tickcnt4, 0);
  for (int next : {s.nexttick1, s.nexttick2, s.nexttick3, s.nexttick4}) {
    EXPECT_GE(next, 10);
    EXPECT_LE(next, 19);
  }
}

TEST_F(Flow, ANewBestIsStoredAtOnceAndMarkedAsARecord) {
  GameScene& s = start();
  play();
  crashWithScore(4);
  EXPECT_EQ(s.overBestNode->text(), "新记录");
  // Synchronised: a fresh store on the same folder sees it.
  kit::CapturingLog log;
  kit::UserDefaults reread(prefs.path(), log);
  EXPECT_EQ(reread.integerForKey("best"), 4);
}

TEST_F(Flow, AScoreBelowOrEqualToTheBestShowsTheStoredBestAndWritesNothing) {
  for (int score : {2, 5}) {
    platform.defaults.setInteger(5, "best");
    platform.defaults.synchronize();
    std::filesystem::remove(prefsFile());
    GameScene& s = start();
    play();
    crashWithScore(score);
    EXPECT_EQ(s.overBestNode->text(), "记 录 : 5") << "score " << score;
    EXPECT_FALSE(std::filesystem::exists(prefsFile())) << "score " << score;
    EXPECT_EQ(platform.defaults.integerForKey("best"), 5);
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
  untilOverScreenIsUp();
  advance(1);
  EXPECT_EQ(platform.notifications.postCount("showad"), 1u);
}

TEST_F(Flow, TwoQuickPlayTapsStartTwoRunsAndTheLinesScrollTwiceAsFast) {
  GameScene& s = start();
  tapButton(*s.playBtn);
  frames(2);
  tapButton(*s.playBtn);
  ASSERT_TRUE(runUntil([&] { return s.startFlag; }));
  frames(2);  // the second newGame
  s.enableTimer(false);
  const double y = s.leftLineNode->position().y;
  advance(1.1);
  // Two scrolling actions each move the line a scene height per 2.2 s: about
  // a whole height in 1.1 s rather than half of one. The second started two
  // frames after the first, which had run one frame before the line was put
  // back: 66 + 65 frames of movement.
  const double frameStep = 568 / 2.2 / 60;
  EXPECT_NEAR(s.leftLineNode->position().y, y - 131 * frameStep, 1e-6);
  EXPECT_NEAR(s.rightLineNode->position().y, y - 131 * frameStep, 1e-6);
}

TEST_F(Flow, TheBestScoreOutlivesTheScene) {
  start();
  play();
  crashWithScore(6);
  kit::HeadlessPlatform relaunched(prefs.path(), TWINLANES_RESOURCES);
  relaunched.defaults.registerDefaults({{"best", 0}});
  EXPECT_EQ(relaunched.defaults.integerForKey("best"), 6);
}

TEST_F(Flow, TheSoundSwitchIsStoredAndAnnouncedButNotSynchronised) {
  GameScene& s = start();
  ASSERT_TRUE(s.soundFlag);
  std::vector<kit::Value> announced;
  platform.notifications.addObserver(this, "soundchange", [&](const kit::Notification& note) {
    announced.push_back(note.object);
  });
  s.toggleSound();
  EXPECT_FALSE(s.soundFlag);
  EXPECT_FALSE(platform.defaults.boolForKey("sound"));
  EXPECT_FALSE(std::filesystem::exists(prefsFile()));
  s.toggleSound();
  EXPECT_TRUE(s.soundFlag);
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
  EXPECT_TRUE(s.homeFlag);
  EXPECT_TRUE(s.overFlag);

  tap(300, 50);  // not a button: nothing, and no steering
  frames(7);
  EXPECT_FALSE(s.startFlag);
  EXPECT_EQ(s.rightCar->carpos(), 1);
  tapButton(*s.playBtn);
  frames(7);
  EXPECT_TRUE(s.startFlag);
  EXPECT_FALSE(s.homeFlag);
}

TEST_F(Flow, RateUsOpensTheGamesStorePage) {
  GameScene& s = start();
  s.rateUs();
  const std::string host = *platform.bundle.infoValue("storeHost").stringValue();
  const int64_t id = platform.bundle.infoValue("appStoreId").integerValue();
  ASSERT_FALSE(host.empty());
  ASSERT_GT(id, 0);
  ASSERT_EQ(platform.urlOpener.opened.size(), 1u);
  EXPECT_EQ(platform.urlOpener.opened[0],
            "itms-apps://" + host + "/app/id" + std::to_string(static_cast<int32_t>(id)));
}
