#include "kit/scene/physics_world.h"

#include <box2d/box2d.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "kit/scene/node.h"
#include "kit/scene/scene.h"

namespace kit {

namespace {

// Scene shapes of 30-100 points become 1-3 m bodies, the size the engine is
// tuned for. The engine pads every polygon with a skin of b2_polygonRadius
// (0.01 m, about 0.3 point here); rectangles are built that much smaller so
// that contacts begin at the geometric edge rather than a third of a point
// early.
constexpr float kPointsPerMetre = 32.0f;
// Nothing is integrated (bodies follow their nodes), so the step length only
// has to be plausible.
constexpr float kStepSeconds = 1.0f / 60.0f;

float toMetres(double points) {
  return static_cast<float>(points) / kPointsPerMetre;
}
double toPoints(float metres) {
  return static_cast<double>(metres) * kPointsPerMetre;
}

}  // namespace

// The engine's world plus what this side keeps about it. Contacts are only
// recorded while the engine steps; they are delivered once it has returned.
struct PhysicsWorld::Engine final : b2ContactListener, b2ContactFilter {
  struct Begun {
    PhysicsBody* a;
    PhysicsBody* b;
    Point point;
  };

  b2World world{b2Vec2(0.0f, 0.0f)};
  // Everything in the simulation. Shared ownership keeps a body alive until
  // the next pass notices that its node has gone.
  std::vector<std::shared_ptr<PhysicsBody>> members;
  std::vector<Begun> begun;
  uint64_t pass = 0;

  Engine() {
    // A body moved only by SetTransform never wakes up: sleeping would
    // silence its contacts after half a second.
    world.SetAllowSleeping(false);
    world.SetContinuousPhysics(false);
    world.SetContactListener(this);
    world.SetContactFilter(this);
  }

  static PhysicsBody& owner(b2Fixture* fixture) {
    return *reinterpret_cast<PhysicsBody*>(fixture->GetUserData().pointer);
  }

  // Either side may ask for the contact: the engine's own filter would need
  // both to agree.
  bool ShouldCollide(b2Fixture* fixtureA, b2Fixture* fixtureB) override {
    const PhysicsBody& a = owner(fixtureA);
    const PhysicsBody& b = owner(fixtureB);
    return (a.categoryBitMask() & b.contactTestBitMask()) != 0 ||
           (b.categoryBitMask() & a.contactTestBitMask()) != 0;
  }

  void BeginContact(b2Contact* contact) override {
    const b2AABB& boxA = contact->GetFixtureA()->GetAABB(0);
    const b2AABB& boxB = contact->GetFixtureB()->GetAABB(0);
    const float x0 = std::max(boxA.lowerBound.x, boxB.lowerBound.x);
    const float x1 = std::min(boxA.upperBound.x, boxB.upperBound.x);
    const float y0 = std::max(boxA.lowerBound.y, boxB.lowerBound.y);
    const float y1 = std::min(boxA.upperBound.y, boxB.upperBound.y);
    begun.push_back({&owner(contact->GetFixtureA()),
                     &owner(contact->GetFixtureB()),
                     {toPoints((x0 + x1) * 0.5f), toPoints((y0 + y1) * 0.5f)}});
  }
};

PhysicsWorld::PhysicsWorld(Scene& scene) : scene_(scene), engine_(std::make_unique<Engine>()) {}

PhysicsWorld::~PhysicsWorld() {
  for (auto& body : engine_->members) {
    body->world_ = nullptr;
    body->simBody_ = nullptr;
  }
}

std::size_t PhysicsWorld::bodyCount() const {
  return engine_->members.size();
}

void PhysicsWorld::release(PhysicsBody& body) {
  auto& members = engine_->members;
  auto it = std::find_if(members.begin(), members.end(),
                         [&](const std::shared_ptr<PhysicsBody>& b) { return b.get() == &body; });
  if (it == members.end())
    return;
  engine_->world.DestroyBody(static_cast<b2Body*>(body.simBody_));
  body.simBody_ = nullptr;
  body.world_ = nullptr;
  members.erase(it);  // the caller's node still owns the body
}

namespace {

b2Body* createSimBody(b2World& world, PhysicsBody& body, float x, float y, float angle) {
  b2BodyDef def;
  // Dynamic: the engine never reports a pair of kinematic or static bodies.
  // Gravity and velocities stay zero, so nothing moves them but SetTransform.
  def.type = b2_dynamicBody;
  def.position.Set(x, y);
  def.angle = angle;
  def.gravityScale = 0.0f;
  def.allowSleep = false;
  def.userData.pointer = reinterpret_cast<uintptr_t>(&body);
  b2Body* sim = world.CreateBody(&def);

  b2FixtureDef fixture;
  fixture.isSensor = true;  // overlap only, never a collision response
  fixture.density = 0.0f;
  fixture.userData.pointer = reinterpret_cast<uintptr_t>(&body);
  const float minExtent = b2_linearSlop;
  if (body.shape() == PhysicsBody::Shape::Circle) {
    b2CircleShape circle;
    circle.m_radius = std::max(minExtent, toMetres(body.size().width * 0.5));
    fixture.shape = &circle;
    sim->CreateFixture(&fixture);
  } else {
    b2PolygonShape box;
    box.SetAsBox(std::max(minExtent, toMetres(body.size().width * 0.5) - b2_polygonRadius),
                 std::max(minExtent, toMetres(body.size().height * 0.5) - b2_polygonRadius));
    fixture.shape = &box;
    sim->CreateFixture(&fixture);
  }
  return sim;
}

}  // namespace

void PhysicsWorld::simulate() {
  Engine& engine = *engine_;
  const uint64_t pass = ++engine.pass;

  // 1. Bodies follow their nodes; the tree decides who is in the world.
  struct Placed {
    const Node* node;
    AffineTransform toScene;
    double angle;
  };
  std::vector<Placed> pending;
  for (const auto& child : scene_.children_)
    pending.push_back({child.get(), {}, 0.0});
  while (!pending.empty()) {
    const Placed parent = pending.back();
    pending.pop_back();
    const Node& node = *parent.node;
    const AffineTransform toScene = parent.toScene.concatenating(node.transform());
    const double angle = parent.angle + node.zRotation();
    if (PhysicsBody* body = node.physicsBody_.get()) {
      const float x = toMetres(toScene.tx), y = toMetres(toScene.ty);
      const auto a = static_cast<float>(angle);
      // A node that moved here from another scene brings its body along.
      if (body->world_ && body->world_ != this)
        body->world_->release(*body);
      const bool fresh = !body->world_;
      if (!body->world_) {
        body->simBody_ = createSimBody(engine.world, *body, x, y, a);
        body->world_ = this;
        body->lastX_ = x;
        body->lastY_ = y;
        body->lastAngle_ = a;
        body->filterDirty_ = false;
        engine.members.push_back(body->shared_from_this());
      }
      if (body->world_ == this) {
        auto* sim = static_cast<b2Body*>(body->simBody_);
        body->seenInPass_ = pass;
        // The engine looks for new pairs at the start of a step only after a
        // body has moved; a refiltered body is "moved" in place so that a
        // pair its new masks allow begins in this step, not the next.
        const bool refiltered = body->filterDirty_;
        if (refiltered) {
          body->filterDirty_ = false;
          sim->GetFixtureList()->Refilter();
        }
        if (refiltered || x != body->lastX_ || y != body->lastY_ || a != body->lastAngle_) {
          sim->SetTransform(b2Vec2(x, y), a);
          body->lastX_ = x;
          body->lastY_ = y;
          body->lastAngle_ = a;
          sim->SetAwake(true);
        } else if (!fresh) {
          // A body that stood still sleeps: the engine leaves it out of its
          // solve, where every body costs a few clock reads per step (a pile
          // of resting obstacles made those most of a frame). Its contacts
          // still begin whenever an awake body meets it, and a new body
          // stays awake for its first step so that it meets still ones.
          sim->SetAwake(false);
        }
      }
    }
    for (const auto& child : node.children_)
      pending.push_back({child.get(), toScene, angle});
  }
  std::erase_if(engine.members, [&](const std::shared_ptr<PhysicsBody>& body) {
    if (body->seenInPass_ == pass)
      return false;
    engine.world.DestroyBody(static_cast<b2Body*>(body->simBody_));
    body->simBody_ = nullptr;
    body->world_ = nullptr;
    return true;
  });

  // 2. Step. Contacts are only recorded in here.
  engine.world.Step(kStepSeconds, 1, 1);

  // 3. Deliver, skipping pairs whose nodes a handler has taken away.
  auto found = std::move(engine.begun);
  engine.begun.clear();
  auto stillHere = [this](const PhysicsBody& body) {
    return body.node_ && body.node_->physicsBody_.get() == &body && body.node_->scene() == &scene_;
  };
  for (const auto& contact : found) {
    if (!delegate_)
      break;
    if (!stillHere(*contact.a) || !stillHere(*contact.b))
      continue;
    delegate_->didBeginContact(
        {contact.a->shared_from_this(), contact.b->shared_from_this(), contact.point});
  }
}

}  // namespace kit
