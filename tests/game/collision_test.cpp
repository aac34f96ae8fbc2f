// Cars meeting obstacles: circles score, rectangles crash.

#include "game_fixture.h"
#include "kit/scene/physics_body.h"

class Collisions : public GameTest {
 protected:
  void SetUp() override {
    start();
    play();
    scene->enableTimer(false);  // only the obstacles a test spawns
  }
  kit::PhysicsContact contact(const kit::NodePtr& a, const kit::NodePtr& b) {
    return {a->physicsBody(), b->physicsBody(), {}};
  }
};

TEST_F(Collisions, CirclesInTheCarsRoadAreCollectedForOnePointEach) {
  GameScene& s = *scene;
  auto first = spawn(1, 0);
  advance(0.5);
  spawn(4, 0);
  ASSERT_TRUE(runUntil([&] { return s._score == 1; }, 180));
  EXPECT_EQ(first->parent(), nullptr);
  EXPECT_EQ(s.allObstacle.size(), 1u);
  EXPECT_EQ(s.lastnode1, first);  // still names the collected circle
  ASSERT_TRUE(runUntil([&] { return s._score == 2; }, 60));
  EXPECT_EQ(s.scoreNode->text(), "2");
  advance(3);  // collected circles are never let through
  EXPECT_FALSE(s.overFlag);
}

TEST_F(Collisions, ARectangleCrashesItsCarWithFlamesAtTheContactMidpoint) {
  GameScene& s = *scene;
  auto rect = spawn(4, 1);
  ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 180));
  // Everything froze at the contact, so the midpoint is still where it was.
  EXPECT_EQ(s.rightSmoke->position(),
            (kit::Point{(rect->position().x + s.rightCar->position().x) * 0.5,
                        (rect->position().y + s.rightCar->position().y) * 0.5}));
  EXPECT_FALSE(s.rightSmoke->hidden());
  EXPECT_TRUE(s.leftSmoke->hidden());
  EXPECT_EQ(rect->alpha(), 1.0);  // nothing blinks after a crash

  std::vector<std::string> seen;  // six frames, 0.15 s each, round and round
  for (int i = 0; i < 56; ++i) {
    frames(1);
    const std::string name = s.rightSmoke->texture().name();
    if (seen.empty() || seen.back() != name)
      seen.push_back(name);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"fire1", "fire2", "fire3", "fire4", "fire5", "fire6",
                                            "fire1"}));
}

TEST_F(Collisions, EitherBodyOfAContactMayBeTheObstacleAndOnlyCarObstaclePairsCount) {
  GameScene& s = *scene;
  auto a = spawn(1, 0), b = spawn(2, 0), c = spawn(3, 1), d = spawn(4, 0);
  s.didBeginContact(contact(s.leftCar, a));
  s.didBeginContact(contact(b, s.leftCar));
  s.didBeginContact(contact(c, d));
  s.didBeginContact(contact(s.leftCar, s.rightCar));
  EXPECT_EQ(s._score, 2);
  EXPECT_FALSE(s.overFlag);
  s.didBeginContact(contact(s.leftCar, c));  // which = the car's caridx
  EXPECT_TRUE(s.overFlag);
  EXPECT_FALSE(s.leftSmoke->hidden());
  EXPECT_TRUE(s.rightSmoke->hidden());
}

TEST_F(Collisions, ACircleMetInTheSameStepAsARectangleStillCountsOnTheRunningLabelOnly) {
  GameScene& s = *scene;
  auto rect = spawn(1, 1), circle = spawn(2, 0);
  s.didBeginContact(contact(rect, s.leftCar));
  s.didBeginContact(contact(s.leftCar, circle));
  EXPECT_EQ(s.scoreNode->text(), "1");
  EXPECT_EQ(s.overScoreNode->text(), "0");
  EXPECT_EQ(platform.defaults.integerForKey("best"), 0);
}
