// The built-in player: where it taps, and that it really plays.

#include "game_fixture.h"

class AutoplayerTest : public GameTest {
 protected:
  std::vector<kit::Point> touches() const { return Autoplayer().touchesFor(*scene); }
  static bool onLeft(const std::vector<kit::Point>& t) { return t.size() == 1 && t[0].x < 160; }
  static bool onRight(const std::vector<kit::Point>& t) { return t.size() == 1 && t[0].x >= 160; }
};

TEST_F(AutoplayerTest, SteersTowardTheNearestCircleAndAwayFromTheNearestRectangle) {
  GameScene& s = start();
  ASSERT_EQ(touches().size(), 1u);
  EXPECT_TRUE(s.playBtn->containsPoint(touches()[0]));
  play();
  s.enableTimer(false);
  EXPECT_TRUE(touches().empty());

  spawn(1, 1);  // a rectangle in the left car's road
  EXPECT_TRUE(onLeft(touches()));
  tap(touches());
  frames(1);
  s.leftCar->setCarpos(0);         // as if still heading for road 1 ...
  EXPECT_TRUE(touches().empty());  // ... a lane change in flight is left to finish
  s.newGame();
  spawn(3, 0);  // a circle in the right car's other road
  EXPECT_TRUE(onRight(touches()));
  s.newGame();
  spawn(2, 1);
  advance(0.3);
  spawn(2, 0);  // a circle above a rectangle: the rectangle is nearer
  EXPECT_TRUE(touches().empty());
}

TEST_F(AutoplayerTest, PlaysSeededGamesRunAfterRunPressingPlayAgainOnlyWhenItIsUp) {
  GameScene& s = start(kPhone, false, 2024);
  int runs = 0, best = 0;
  bool wasOver = false;
  for (int i = 0; i < 60 * 120; ++i) {
    auto t = touches();
    if (s.overFlag) {
      EXPECT_TRUE(t.empty() || s.overLayer->alpha() == 1.0);
    }
    if (!t.empty())
      tap(t);
    frames(1);
    runs += s.overFlag && !wasOver;
    wasOver = s.overFlag;
    best = std::max(best, s._score);
  }
  EXPECT_GE(runs, 2);
  EXPECT_GE(best, 10);
  EXPECT_EQ(platform.defaults.integerForKey("best"), best);
}
