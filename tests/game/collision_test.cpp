// Cars meeting obstacles: circles score, rectangles crash.

#include "game_fixture.h"

class Collisions : public GameTest {
 protected:
  void SetUp() override {
    start();
    play();
    scene->enableTimer(false);  // only the obstacles a test spawns
  }
};

TEST_F(Collisions, CirclesInTheCarsRoadAreCollectedForOnePointEach) {
  GameScene& s = *scene;
  auto first = spawn(1, kCircle);
  advance(0.5);
  spawn(4, kCircle);
  ASSERT_TRUE(runUntil([&] { return s.score() == 1; }, 180));
  EXPECT_EQ(first->parent(), nullptr);
  EXPECT_EQ(s.allObstacle().size(), 1u);
  ASSERT_TRUE(runUntil([&] { return s.score() == 2; }, 60));
  EXPECT_EQ(s.scoreNode().text(), "2");
  advance(3);  // collected circles are never let through
  EXPECT_FALSE(s.overFlag());
}

TEST_F(Collisions, ARectangleCrashesItsCarWithFlamesAtTheContactMidpoint) {
  GameScene& s = *scene;
  auto rect = spawn(4, kRect);
  ASSERT_TRUE(runUntil([&] { return s.overFlag(); }, 180));
  // Everything froze at the contact, so the midpoint is still where it was.
  EXPECT_EQ(s.rightSmoke().position(),
            (kit::Point{(rect->position().x + s.rightCar().position().x) * 0.5,
                        (rect->position().y + s.rightCar().position().y) * 0.5}));
  EXPECT_FALSE(s.rightSmoke().hidden());
  EXPECT_TRUE(s.leftSmoke().hidden());
  EXPECT_EQ(rect->alpha(), 1.0);  // nothing blinks after a crash
  advance(0.95);                  // six frames, 0.15 s each, round and round
  EXPECT_EQ(s.rightSmoke().texture().name(), "fire1");
  advance(0.3);
  EXPECT_EQ(s.rightSmoke().texture().name(), "fire3");
}
