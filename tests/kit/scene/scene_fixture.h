#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/clock.h"
#include "kit/foundation/run_loop.h"
#include "kit/scene/frame_driver.h"
#include "kit/scene/label_node.h"
#include "kit/scene/physics_body.h"
#include "kit/scene/scene.h"
#include "kit/scene/sprite_node.h"

namespace kit::testing {

// A scene that writes down what the frame driver asks of it, and is its own
// contact delegate, as a game scene would be.
class RecordingScene : public Scene, public PhysicsContactDelegate {
 public:
  explicit RecordingScene(Size size) : Scene(size) { physicsWorld().setContactDelegate(this); }

  void touchesBegan(const TouchSet& touches, const Event*) override {
    log.push_back("touches");
    std::vector<Point> points;
    for (const Touch& t : touches)
      points.push_back(t.locationInScene());
    taps.push_back(points);
    if (onTouches)
      onTouches(touches);
  }
  void update(double currentTime) override {
    log.push_back("update");
    lastUpdateTime = currentTime;
  }
  void didSimulatePhysics() override { log.push_back("didSimulatePhysics"); }
  void didBeginContact(const PhysicsContact& contact) override {
    log.push_back("contact");
    contacts.push_back({contact.bodyA->node(), contact.bodyB->node(), contact.contactPoint});
    if (onContact)
      onContact(contact);
  }

  struct Contact {
    NodePtr a, b;
    Point point;
    // Whether this contact pairs exactly these two nodes, in either role.
    bool pairs(const NodePtr& x, const NodePtr& y) const {
      return (a == x && b == y) || (a == y && b == x);
    }
  };

  std::vector<std::string> log;
  std::vector<std::vector<Point>> taps;
  std::vector<Contact> contacts;
  double lastUpdateTime = -1;
  std::function<void(const PhysicsContact&)> onContact;
  std::function<void(const TouchSet&)> onTouches;
};

// Drives a RecordingScene of 320 × 568 points through real frames on a
// manual clock. Frames are 20 ms apart unless a test says otherwise, which
// keeps frame times exact in nanoseconds.
class SceneFixture : public ::testing::Test {
 protected:
  static constexpr double kFrame = 0.02;

  SceneFixture() { driver.presentScene(scene); }

  // One frame at the current clock time.
  void frame() { driver.runFrame(); }

  // Moves the clock in frames of `step` seconds, running a frame after each.
  void advance(double seconds, double step = kFrame) {
    const auto frames = static_cast<long>(std::llround(seconds / step));
    const auto nanos = static_cast<int64_t>(std::llround(step * kNanosPerSecond));
    for (long i = 0; i < frames; ++i) {
      clock.advance(nanos);
      driver.runFrame();
    }
  }

  // One touch-began event with these fingers, delivered at the next frame.
  void tap(std::initializer_list<Point> points) { driver.touchesBegan(points); }

  NodePtr addNode(Point position, const NodePtr& parent = nullptr) {
    auto node = Node::node();
    node->setPosition(position);
    (parent ? parent : std::static_pointer_cast<Node>(scene))->addChild(node);
    return node;
  }

  std::shared_ptr<SpriteNode> addSprite(Point position, Size size,
                                        const NodePtr& parent = nullptr) {
    auto sprite = SpriteNode::spriteNodeWithTexture(Texture("box"), size);
    sprite->setPosition(position);
    (parent ? parent : std::static_pointer_cast<Node>(scene))->addChild(sprite);
    return sprite;
  }

  // A sprite with a rectangle or circle body of its own size, in the given categories.
  std::shared_ptr<SpriteNode> addBox(Point position, Size size, uint32_t category,
                                     uint32_t contactTest) {
    return withBody(addSprite(position, size), PhysicsBody::bodyWithRectangleOfSize(size), category,
                    contactTest);
  }
  std::shared_ptr<SpriteNode> addBall(Point position, double radius, uint32_t category,
                                      uint32_t contactTest) {
    return withBody(addSprite(position, {2 * radius, 2 * radius}),
                    PhysicsBody::bodyWithCircleOfRadius(radius), category, contactTest);
  }
  static std::shared_ptr<SpriteNode> withBody(std::shared_ptr<SpriteNode> sprite,
                                              std::shared_ptr<PhysicsBody> body, uint32_t category,
                                              uint32_t contactTest) {
    body->setCategoryBitMask(category);
    body->setContactTestBitMask(contactTest);
    body->setCollisionBitMask(0);
    sprite->setPhysicsBody(body);
    return sprite;
  }

  ManualClock clock;
  RunLoop runLoop{clock};
  FrameDriver driver{runLoop};
  std::shared_ptr<RecordingScene> scene = std::make_shared<RecordingScene>(Size{320, 568});
};

}  // namespace kit::testing
