#pragma once

#include <cstddef>
#include <memory>

#include "kit/foundation/geometry.h"
#include "kit/scene/physics_contact.h"

namespace kit {

class Scene;

// A scene's contact detector, built on a
// rigid-body engine kept out of this header. Owned by its Scene. Once per
// frame, after the actions, the frame driver simulates it:
//   1. every body of a node in the scene's tree joins the world, and every
//      body whose node left the tree (or lost the body) leaves it; each body
//      takes its node's scene position and rotation;
//   2. the engine steps; a contact begins once, when two shapes start to
//      overlap, and only if one body's category meets the other's
//      contact-test mask;
//   3. the contacts found are delivered to the delegate in the order found.
//      A contact one of whose nodes has left the tree (or dropped the body)
//      by the time its turn comes is dropped, so a handler may remove nodes
//      named in later contacts of the same step.
// A body that left and comes back begins its contacts afresh.
class PhysicsWorld {
 public:
  explicit PhysicsWorld(Scene& scene);
  ~PhysicsWorld();
  PhysicsWorld(const PhysicsWorld&) = delete;
  PhysicsWorld& operator=(const PhysicsWorld&) = delete;

  // Stored for the game; bodies follow their nodes, so gravity moves nothing.
  Vector gravity() const { return gravity_; }
  void setGravity(Vector gravity) { gravity_ = gravity; }

  // Not owned: the delegate must outlive the world or be cleared first (the
  // usual delegate is the scene that owns the world). May be null.
  PhysicsContactDelegate* contactDelegate() const { return delegate_; }
  void setContactDelegate(PhysicsContactDelegate* delegate) { delegate_ = delegate; }

  // Bodies in the simulation after the last step.
  std::size_t bodyCount() const;

  // One simulation pass as described above. Called by the frame driver.
  void simulate();

 private:
  struct Engine;
  // Takes `body` out of this world (it moved to another scene's tree).
  void release(PhysicsBody& body);

  Scene& scene_;
  Vector gravity_;
  PhysicsContactDelegate* delegate_ = nullptr;
  std::unique_ptr<Engine> engine_;
};

}  // namespace kit
