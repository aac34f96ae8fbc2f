#pragma once

#include <cstdint>
#include <memory>

#include "kit/foundation/geometry.h"

namespace kit {

class Node;
class PhysicsWorld;

// A shape attached to a node for contact detection. The shape is centred on the node's position and
// turns with the node. Bodies never move nodes: they follow them, and the world reports when two
// shapes begin to overlap. Masks are 32-bit category sets:
//   categoryBitMask     what this body is (default all bits)
//   contactTestBitMask  which categories it wants to hear about (default 0)
//   collisionBitMask    stored for the game; nothing in this world collides
//                       physically, so it has no effect (default all bits)
// A contact is reported when either body's category meets the other's
// contact-test mask. Created by the factories and handed to
// Node::setPhysicsBody, which shares it with the world.
class PhysicsBody : public std::enable_shared_from_this<PhysicsBody> {
 public:
  enum class Shape { Rectangle, Circle };

  // A rectangle of `size` points centred on the node.
  static std::shared_ptr<PhysicsBody> bodyWithRectangleOfSize(Size size);
  static std::shared_ptr<PhysicsBody> bodyWithCircleOfRadius(double radius);

  PhysicsBody(Shape shape, Size size);
  PhysicsBody(const PhysicsBody&) = delete;
  PhysicsBody& operator=(const PhysicsBody&) = delete;

  Shape shape() const { return shape_; }
  // The rectangle's size, or the circle's diameter in both directions.
  Size size() const { return size_; }

  uint32_t categoryBitMask() const { return category_; }
  void setCategoryBitMask(uint32_t mask);
  uint32_t contactTestBitMask() const { return contactTest_; }
  void setContactTestBitMask(uint32_t mask);
  uint32_t collisionBitMask() const { return collision_; }
  void setCollisionBitMask(uint32_t mask) { collision_ = mask; }
  // Stored for the game; bodies follow their nodes, so gravity moves nothing.
  bool affectedByGravity() const { return affectedByGravity_; }
  void setAffectedByGravity(bool affected) { affectedByGravity_ = affected; }

  // The node this body is attached to, or null.
  std::shared_ptr<Node> node() const;

 private:
  friend class Node;
  friend class PhysicsWorld;

  Shape shape_;
  Size size_;
  uint32_t category_ = 0xFFFFFFFF;
  uint32_t contactTest_ = 0;
  uint32_t collision_ = 0xFFFFFFFF;
  bool affectedByGravity_ = true;

  Node* node_ = nullptr;  // set and cleared by the node
  // World bookkeeping, touched only by PhysicsWorld. The simulation's own
  // body is kept opaque so that no physics-engine type leaks into headers.
  PhysicsWorld* world_ = nullptr;
  void* simBody_ = nullptr;
  uint64_t seenInPass_ = 0;
  bool filterDirty_ = false;
  float lastX_ = 0, lastY_ = 0, lastAngle_ = 0;
};

}  // namespace kit
