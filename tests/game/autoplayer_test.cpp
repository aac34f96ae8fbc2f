// The built-in player: where it taps, and that it really plays.

#include "game_fixture.h"

class AutoplayerTest : public GameTest {
 protected:
  std::vector<kit::Point> touches() const { return player.touchesFor(*scene); }
  // One tap on the left half, one on the right, or both.
  static bool onLeft(const std::vector<kit::Point>& t) { return t.size() == 1 && t[0].x < 160; }
  static bool onRight(const std::vector<kit::Point>& t) { return t.size() == 1 && t[0].x >= 160; }

  Autoplayer player;
};

TEST_F(AutoplayerTest, PressesPlayOnceOnTheHomeScreen) {
  GameScene& s = start();
  auto first = touches();
  ASSERT_EQ(first.size(), 1u);
  EXPECT_TRUE(s.playBtn->containsPoint(first[0]));
  tap(first);
  frames(1);
  EXPECT_TRUE(touches().empty());  // the fade has begun: no second press
}

TEST_F(AutoplayerTest, SteersTowardCirclesAndAwayFromRectangles) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  EXPECT_TRUE(touches().empty());  // nothing to chase or avoid

  spawn(1, 1);  // a rectangle in the left car's road
  EXPECT_TRUE(onLeft(touches()));
  s.newGame();
  spawn(3, 0);  // a circle in the right car's other road
  EXPECT_TRUE(onRight(touches()));
  s.newGame();
  spawn(4, 0);  // a circle already in the right car's road
  EXPECT_TRUE(touches().empty());

  // The nearer obstacle decides: a circle in road 2 below a rectangle there.
  s.newGame();
  spawn(2, 1);
  advance(0.3);
  spawn(2, 0);
  auto nearRect = touches();
  EXPECT_TRUE(nearRect.empty());  // the rectangle comes first: stay in road 1
}

TEST_F(AutoplayerTest, WaitsForALaneChangeToFinish) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  spawn(1, 1);
  tap(touches());
  frames(1);
  EXPECT_EQ(s.leftCar->carpos(), 1);
  s.leftCar->setCarpos(0);  // pretend it still heads for road 1
  EXPECT_TRUE(touches().empty());
  frames(6);
  EXPECT_TRUE(onLeft(touches()));
}

TEST_F(AutoplayerTest, PressesPlayAgainOnlyOnceTheScoreScreenIsUp) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  spawn(2, 0);  // let through: the left car never goes for it
  ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 240));
  while (s.overLayer->alpha() < 1.0) {
    EXPECT_TRUE(touches().empty());
    frames(1);
  }
  auto again = touches();
  ASSERT_EQ(again.size(), 1u);
  EXPECT_TRUE(s.againBtn->containsPoint(again[0]));
}

TEST_F(AutoplayerTest, PlaysSeededGamesRunAfterRun) {
  GameScene& s = start(kPhone, false, 2024);
  int runs = 0, best = 0;
  bool wasOver = false;
  for (int i = 0; i < 60 * 120; ++i) {
    auto t = touches();
    if (!t.empty())
      tap(t);
    frames(1);
    if (s.overFlag && !wasOver)
      ++runs;
    wasOver = s.overFlag;
    best = std::max(best, s._score);
  }
  EXPECT_GE(runs, 2);
  EXPECT_GE(best, 10);
  EXPECT_EQ(platform.defaults.integerForKey("best"), best);
}
