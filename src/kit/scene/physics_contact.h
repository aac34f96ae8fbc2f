#pragma once

#include <memory>

#include "kit/foundation/geometry.h"
#include "kit/scene/physics_body.h"

namespace kit {

// Two bodies whose shapes have begun to overlap. Which body is A and which is B carries no meaning.
struct PhysicsContact {
  std::shared_ptr<PhysicsBody> bodyA;
  std::shared_ptr<PhysicsBody> bodyB;
  // Scene coordinates: the centre of the overlap of the two shapes' bounding
  // boxes, an approximation good enough to place an effect.
  Point contactPoint;
};

// Receives the world's contacts.
// Called on the main thread, after the physics step, once per contact; the
// handler may change anything (remove nodes, change masks, run actions).
class PhysicsContactDelegate {
 public:
  virtual ~PhysicsContactDelegate() = default;
  virtual void didBeginContact(const PhysicsContact& contact) { (void)contact; }
};

}  // namespace kit
