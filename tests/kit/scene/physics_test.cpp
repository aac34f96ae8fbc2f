#include <cmath>
#include <numbers>
#include <vector>

#include "kit/scene/action.h"
#include "scene_fixture.h"

namespace kit::testing {
namespace {

using PhysicsTest = SceneFixture;

constexpr uint32_t kCar = 1, kObstacle = 2;

TEST_F(PhysicsTest, ContactsAreReportedWhenEitherBodysCategoryMeetsTheOthersTestMask) {
  struct Case {
    uint32_t categoryA, testA, categoryB, testB;
    bool reported;
  };
  const std::vector<Case> cases = {
      {kCar, kObstacle, kObstacle, kCar, true},   // both ask
      {kCar, kObstacle, kObstacle, 0, true},      // only A asks
      {kCar, 0, kObstacle, kCar, true},           // only B asks
      {kCar, kObstacle, kCar, kObstacle, false},  // two cars
      {kObstacle, kCar, kObstacle, kCar, false},  // two obstacles
      {kCar, 0, kObstacle, 0, false},
  };
  std::vector<std::pair<NodePtr, NodePtr>> pairs;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const Case& c = cases[i];
    const Point at{160, 40.0 + 80.0 * static_cast<double>(i)};
    pairs.emplace_back(addBox(at, {30, 30}, c.categoryA, c.testA),
                       addBox({at.x + 10, at.y + 10}, {30, 30}, c.categoryB, c.testB));
  }
  frame();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    int reported = 0;
    for (const auto& contact : scene->contacts) {
      reported += contact.pairs(pairs[i].first, pairs[i].second);
    }
    EXPECT_EQ(reported, cases[i].reported ? 1 : 0) << "case " << i;
  }
  EXPECT_EQ(scene->contacts.size(), 3u);
}

TEST_F(PhysicsTest, AContactBeginsOnceAndAgainOnlyAfterTheShapesHaveParted) {
  auto car = addBox({100, 100}, {40, 30}, kCar, 0);
  auto obstacle = addBall({100, 120}, 10, kObstacle, 0);
  frame();
  EXPECT_TRUE(scene->contacts.empty());
  car->physicsBody()->setContactTestBitMask(kObstacle);  // applies from the next frame
  advance(1);
  EXPECT_EQ(scene->contacts.size(), 1u);
  obstacle->setPosition({100, 300});
  advance(0.02);
  obstacle->setPosition({110, 110});
  advance(0.02);
  ASSERT_EQ(scene->contacts.size(), 2u);
  EXPECT_TRUE(scene->contacts[1].pairs(car, obstacle));
}

TEST_F(PhysicsTest, ARotatedRectangleMeetsACircleOnlyWhereItReallyIs) {
  // A 60 × 20 rectangle turned 45°: its long faces have the normal n.
  auto bar = addBox({160, 280}, {60, 20}, kCar, kObstacle);
  bar->setZRotation(std::numbers::pi / 4);
  const double s = std::sqrt(0.5);
  const Vector n{-s, s};
  auto along = [&](double d) { return Point{160 + n.x * d, 280 + n.y * d}; };

  // Touching distance along n is 10 + 10: shapes meet at their drawn edges.
  auto ball = addBall(along(20.3), 10, kObstacle, kCar);
  frame();
  EXPECT_TRUE(scene->contacts.empty());
  ball->setPosition(along(19.7));
  advance(0.02);
  ASSERT_EQ(scene->contacts.size(), 1u);
  const Point p = scene->contacts[0].point;
  EXPECT_NEAR(p.x, 160 + n.x * 15, 6);
  EXPECT_NEAR(p.y, 280 + n.y * 15, 6);

  // Inside the unturned rectangle's outline, but clear of the turned one.
  auto corner = addBall({160 + 28, 280}, 5, kObstacle, kCar);
  advance(0.02);
  EXPECT_EQ(scene->contacts.size(), 1u);
  corner->setPosition({160 + 14, 280 + 14});  // on the bar's long axis
  advance(0.02);
  EXPECT_EQ(scene->contacts.size(), 2u);
}

TEST_F(PhysicsTest, BodiesFollowTheirNodesThroughMovedAndTurnedParents) {
  auto layer = addNode({100, 100});
  layer->setZRotation(std::numbers::pi / 2);
  // Lands at (100, 150) in the scene.
  auto box = withBody(addSprite({50, 0}, {20, 20}, layer),
                      PhysicsBody::bodyWithRectangleOfSize({20, 20}), kCar, kObstacle);

  addBall({150, 100}, 5, kObstacle, kCar);  // where it would be unturned
  frame();
  EXPECT_TRUE(scene->contacts.empty());
  auto hit = addBall({100, 150}, 5, kObstacle, kCar);
  advance(0.02);
  ASSERT_EQ(scene->contacts.size(), 1u);
  EXPECT_TRUE(scene->contacts[0].pairs(box, hit));
}

TEST_F(PhysicsTest, HandlersMayRemoveNodesAndContactsOfRemovedNodesAreDropped) {
  auto car = addBox({100, 100}, {40, 30}, kCar, kObstacle);
  auto first = addBall({95, 100}, 5, kObstacle, kCar);
  auto second = addBall({105, 100}, 5, kObstacle, kCar);
  // Each handler removes its own obstacle: both contacts are delivered.
  scene->onContact = [&](const PhysicsContact& contact) {
    auto a = contact.bodyA->node(), b = contact.bodyB->node();
    (a == car ? b : a)->removeFromParent();
  };
  frame();
  EXPECT_EQ(scene->contacts.size(), 2u);
  EXPECT_TRUE(scene->children().size() == 1 && scene->children()[0] == car);

  // Now the first handler takes both away: the second contact names a node
  // that has left the tree and is dropped.
  auto third = addBall({95, 100}, 5, kObstacle, kCar);
  auto fourth = addBall({105, 100}, 5, kObstacle, kCar);
  scene->onContact = [&](const PhysicsContact&) {
    third->removeFromParent();
    fourth->removeFromParent();
  };
  scene->contacts.clear();
  advance(0.1);
  EXPECT_EQ(scene->contacts.size(), 1u);
  EXPECT_EQ(scene->physicsWorld().bodyCount(), 1u);
}

TEST_F(PhysicsTest, ABodyLeavesTheWorldWithItsNodeAndComesBackWithIt) {
  auto layer = addNode({0, 0});
  auto car = addBox({100, 100}, {40, 30}, kCar, kObstacle);
  auto obstacle = addBall({100, 300}, 10, kObstacle, kCar);
  obstacle->removeFromParent();
  layer->addChild(obstacle);
  frame();
  EXPECT_EQ(scene->physicsWorld().bodyCount(), 2u);

  layer->removeFromParent();  // takes the obstacle's body out too
  obstacle->setPosition({100, 100});
  advance(0.1);
  EXPECT_EQ(scene->physicsWorld().bodyCount(), 1u);
  EXPECT_TRUE(scene->contacts.empty());

  scene->addChild(layer);
  advance(0.02);
  EXPECT_EQ(scene->physicsWorld().bodyCount(), 2u);
  ASSERT_EQ(scene->contacts.size(), 1u);

  obstacle->setPhysicsBody(nullptr);
  advance(0.02);
  EXPECT_EQ(scene->physicsWorld().bodyCount(), 1u);
}

TEST_F(PhysicsTest, StillBodiesSleepInTheEngineYetMeetMovingAndNewBodies) {
  std::vector<std::shared_ptr<SpriteNode>> pile;
  for (int i = 0; i < 40; ++i)
    pile.push_back(addBox({20.0 + 7 * i, 50}, {20, 20}, kObstacle, kCar));
  auto car = addBox({100, 300}, {40, 30}, kCar, kObstacle);
  frame();
  advance(1);  // everything has stood still for a second
  EXPECT_TRUE(scene->contacts.empty());

  car->runAction(Action::moveToY(50, 0.5));
  advance(0.6);
  const auto met = scene->contacts.size();
  EXPECT_GE(met, 5u);  // the moving car meets the resting boxes under it
  for (const auto& contact : scene->contacts)
    EXPECT_TRUE(contact.a == car || contact.b == car);

  // A body that appears on the car, now still again, meets it at once.
  advance(1);
  auto newcomer = addBall({100, 50}, 10, kObstacle, kCar);
  frame();
  ASSERT_EQ(scene->contacts.size(), met + 1);
  EXPECT_TRUE(scene->contacts.back().pairs(car, newcomer));
}

}  // namespace
}  // namespace kit::testing
