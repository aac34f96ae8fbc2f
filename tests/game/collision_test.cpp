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
  auto second = spawn(4, 0);
  ASSERT_TRUE(runUntil([&] { return s._score == 1; }, 180));
  EXPECT_EQ(s.scoreNode->text(), "1");
  EXPECT_EQ(first->parent(), nullptr);
  ASSERT_EQ(s.allObstacle.size(), 1u);
  EXPECT_EQ(s.allObstacle[0], second);
  // The road's latest spawn still names the collected circle.
  EXPECT_EQ(s.lastnode1, first);

  ASSERT_TRUE(runUntil([&] { return s._score == 2; }, 60));
  EXPECT_EQ(s.scoreNode->text(), "2");
  EXPECT_TRUE(s.allObstacle.empty());
  // Collected circles are never let through.
  advance(3);
  EXPECT_FALSE(s.overFlag);
  EXPECT_TRUE(s.startFlag);
}

TEST_F(Collisions, ARectangleCrashesTheRightCarWithFlamesAtTheContactMidpoint) {
  GameScene& s = *scene;
  auto rect = spawn(4, 1);
  ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 180));
  // Everything froze at the contact, so the midpoint is still where it was.
  const kit::Point mid{(rect->position().x + s.rightCar->position().x) * 0.5,
                       (rect->position().y + s.rightCar->position().y) * 0.5};
  EXPECT_EQ(s.rightSmoke->position(), mid);
  EXPECT_FALSE(s.rightSmoke->hidden());
  EXPECT_TRUE(s.leftSmoke->hidden());
  EXPECT_FALSE(rect->hasActions());
  EXPECT_EQ(rect->alpha(), 1.0);  // nothing blinks after a crash

  // The flames cycle through the six frames every 0.9 s.
  ASSERT_TRUE(s.rightSmoke->actionForKey("crush"));
  std::vector<std::string> seen;
  for (int i = 0; i < 56; ++i) {
    frames(1);
    const std::string name = s.rightSmoke->texture().name();
    if (seen.empty() || seen.back() != name)
      seen.push_back(name);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"fire1", "fire2", "fire3", "fire4", "fire5", "fire6",
                                            "fire1"}));
}

TEST_F(Collisions, ARectangleInTheLeftCarsRoadCrashesTheLeftCar) {
  GameScene& s = *scene;
  spawn(1, 1);
  ASSERT_TRUE(runUntil([&] { return s.overFlag; }, 180));
  EXPECT_FALSE(s.leftSmoke->hidden());
  EXPECT_TRUE(s.rightSmoke->hidden());
  EXPECT_TRUE(s.leftSmoke->actionForKey("crush"));
}

TEST_F(Collisions, EitherBodyOfAContactMayBeTheObstacle) {
  GameScene& s = *scene;
  auto a = spawn(1, 0), b = spawn(2, 0);
  s.didBeginContact(contact(s.leftCar, a));
  s.didBeginContact(contact(b, s.leftCar));
  EXPECT_EQ(s._score, 2);
  EXPECT_TRUE(s.allObstacle.empty());

  // Pairs that the masks never let through change nothing.
  auto c = spawn(3, 1), d = spawn(4, 0);
  s.didBeginContact(contact(c, d));
  s.didBeginContact(contact(s.leftCar, s.rightCar));
  EXPECT_FALSE(s.overFlag);
  EXPECT_EQ(s._score, 2);

  s.didBeginContact(contact(c, s.rightCar));
  EXPECT_TRUE(s.overFlag);
  EXPECT_FALSE(s.rightSmoke->hidden());
}

TEST_F(Collisions, ACircleMetInTheSameStepAsARectangleStillCountsOnTheRunningLabelOnly) {
  GameScene& s = *scene;
  auto rect = spawn(1, 1), circle = spawn(2, 0);
  s.didBeginContact(contact(rect, s.leftCar));
  s.didBeginContact(contact(s.leftCar, circle));
  EXPECT_TRUE(s.overFlag);
  EXPECT_EQ(s._score, 1);
  EXPECT_EQ(s.scoreNode->text(), "1");
  EXPECT_EQ(s.overScoreNode->text(), "0");
  EXPECT_EQ(platform.defaults.integerForKey("best"), 0);
}
