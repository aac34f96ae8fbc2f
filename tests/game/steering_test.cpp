// Taps steer the cars during a run, and only then.

#include <numbers>

#include "game_fixture.h"

class Steering : public GameTest {
 protected:
  void SetUp() override {
    start();
    play();
    scene->enableTimer(false);  // nothing falls in the way
  }
  const Car& left() const { return scene->leftCar(); }
  const Car& right() const { return scene->rightCar(); }
};

TEST_F(Steering, ATapMovesItsHalfsCarOneRoadInATenthOfASecondWithATilt) {
  tap(100, 300);
  frames(1);
  EXPECT_EQ(left().carpos(), 1);  // at once, before the car arrives
  frames(3);
  EXPECT_NEAR(left().zRotation(), -std::numbers::pi / 6, 1e-12);  // noses right
  EXPECT_NEAR(left().position().x, 80, 1e-9);
  frames(3);
  EXPECT_EQ(left().position(), (kit::Point{120, 92}));
  EXPECT_NEAR(left().zRotation(), 0, 1e-15);
  EXPECT_EQ(right().position().x, 280);
}

TEST_F(Steering, ASecondTapWithinTheMoveBringsTheCarBack) {
  tap(100, 300);
  frames(3);
  tap(100, 300);  // within the first 0.1 s
  frames(11);
  EXPECT_EQ(left().carpos(), 0);
  EXPECT_NEAR(left().position().x, 40, 1e-12);
  EXPECT_NEAR(left().zRotation(), 0, 1e-12);
}

TEST_F(Steering, TheCentreLineCountsAsRight) {
  tap(160, 300);  // exactly W / 2
  frames(2);
  EXPECT_GT(right().zRotation(), 0);  // noses left
  frames(5);
  EXPECT_EQ(right().position().x, 200);
  EXPECT_EQ(left().position().x, 40);
}

TEST_F(Steering, EachCarMovesOncePerEventHoweverManyFingersAreOnItsHalf) {
  tap({{300, 300}});
  frames(7);
  ASSERT_EQ(right().position().x, 200);

  tap({{10, 10}, {150, 500}, {80, 200}});  // three fingers on the left
  frames(7);
  EXPECT_EQ(left().position().x, 120);
  EXPECT_EQ(right().position().x, 200);

  tap({{10, 10}, {300, 10}});  // one on each half moves both
  frames(7);
  EXPECT_EQ(left().position().x, 40);
  EXPECT_EQ(right().position().x, 280);
}

using HomeTaps = GameTest;

TEST_F(HomeTaps, TapsOffTheButtonsNeverMoveACar) {
  GameScene& s = start();
  tap({{40, 50}, {300, 50}});
  advance(1);
  EXPECT_FALSE(s.startFlag());
  EXPECT_EQ(s.leftCar().position().x, 40);
  EXPECT_EQ(s.rightCar().position().x, 280);
}

TEST_F(HomeTaps, TheInvisibleHelpButtonStartsARun) {
  GameScene& s = start();
  tapButton(s.helpPlayBtn());  // alpha 0, yet hit-tested all the same
  frames(7);
  EXPECT_TRUE(s.startFlag());
}
