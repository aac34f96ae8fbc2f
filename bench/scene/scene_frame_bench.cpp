// The cost of one scene frame (run-loop pass, actions, physics step and
// contact delivery) with two cars and N falling obstacles, against bare Box2D
// stepping the same bodies moved by SetTransform. Each iteration runs one
// frame of each, one after the other, so machine noise hits them alike; both
// are timed in thread CPU time, which a busy machine inflates far less than
// wall time.
//   frame_share  scene frame time as a fraction of a 16.67 ms frame
//                (goals: N = 20 below 0.006, i.e. 100 us; N = 200 below 0.06)
//   bare_share   the same for the bare engine loop
//   ratio        scene frame time over bare engine time
// Obstacles keep a constant density of 20 per screen height in four lanes
// (the band they cycle through is N / 20 screens tall), half circles and
// half rectangles, as in play; the cars sit in the outer lanes.

#include <benchmark/benchmark.h>
#include <box2d/box2d.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <vector>

#include "kit/foundation/clock.h"
#include "kit/foundation/run_loop.h"
#include "kit/scene/action.h"
#include "kit/scene/frame_driver.h"
#include "kit/scene/physics_body.h"
#include "kit/scene/scene.h"
#include "kit/scene/sprite_node.h"

namespace {

constexpr double kW = 320, kH = 568;
constexpr double kSpeed = kH / 2.2;  // points per second
constexpr int64_t kFrameNanos = 16'666'667;
constexpr double kFrameSeconds = 1.0 / 60;
constexpr double kCarW = kW * 0.25 * 0.7, kCarH = kCarW * 0.75, kCarY = kCarH + 50;
constexpr double kObstacleW = kW * 0.25 * 0.6, kObstacleH = kObstacleW * 0.65;
constexpr uint32_t kCarCategory = 1, kObstacleCategory = 2;

double laneX(int lane) {
  return (2 * lane + 1) * kW * 0.125;
}

// Where obstacle i starts, and the band it falls through before jumping back.
struct Placement {
  double x, y;
  bool circle;
};
std::vector<Placement> placements(int n, double band) {
  std::vector<Placement> out;
  const double spacing = band / std::max(1, n / 4);
  for (int i = 0; i < n; ++i) {
    const int lane = i % 4, row = i / 4;
    out.push_back({laneX(lane), row * spacing + lane * spacing / 4, i % 2 == 0});
  }
  return out;
}

double bandFor(int n) {
  return std::max(kH, n / 20.0 * kH);
}

class CountingScene final : public kit::Scene, public kit::PhysicsContactDelegate {
 public:
  CountingScene() : Scene({kW, kH}) { physicsWorld().setContactDelegate(this); }
  void didBeginContact(const kit::PhysicsContact&) override { ++contacts; }
  int64_t contacts = 0;
};

std::shared_ptr<kit::PhysicsBody> body(bool circle, double w, double h, uint32_t category,
                                       uint32_t contactTest) {
  auto b = circle ? kit::PhysicsBody::bodyWithCircleOfRadius(w * 0.5)
                  : kit::PhysicsBody::bodyWithRectangleOfSize({w * 0.7, h * 0.94});
  b->setCategoryBitMask(category);
  b->setContactTestBitMask(contactTest);
  b->setCollisionBitMask(0);
  b->setAffectedByGravity(false);
  return b;
}

// The game's world, built with the kit.
struct SceneWorld {
  explicit SceneWorld(int n) {
    auto obstacleLayer = kit::SpriteNode::spriteNodeWithColor(kit::Color::clear(), {kW, kH});
    obstacleLayer->setAnchorPoint({0, 0});
    scene->addChild(obstacleLayer);
    for (int lane : {0, 3}) {
      auto car = kit::SpriteNode::spriteNodeWithTexture(kit::Texture("car"), {kCarW, kCarH});
      car->setPosition({laneX(lane), kCarY});
      car->setPhysicsBody(body(false, kCarW, kCarH, kCarCategory, kObstacleCategory));
      scene->addChild(car);
    }
    const double band = bandFor(n);
    auto fall = kit::Action::repeatActionForever(kit::Action::sequence(
        {kit::Action::moveBy({0, -band}, band / kSpeed), kit::Action::moveBy({0, band}, 0)}));
    for (const Placement& p : placements(n, band)) {
      auto obstacle = kit::SpriteNode::spriteNodeWithTexture(
          kit::Texture(p.circle ? "circle" : "rect"), {kObstacleW, kObstacleH});
      obstacle->setPosition({p.x, p.y});
      obstacle->setPhysicsBody(
          body(p.circle, kObstacleW, kObstacleH, kObstacleCategory, kCarCategory));
      obstacle->runAction(fall);
      obstacleLayer->addChild(obstacle);
    }
    spawnTimer = runLoop.scheduledTimer(
        0.1, [] {}, true);
    driver.presentScene(scene);
    driver.runFrame();
  }

  void frame() {
    clock.advance(kFrameNanos);
    driver.runFrame();
  }

  kit::ManualClock clock;
  kit::RunLoop runLoop{clock};
  kit::FrameDriver driver{runLoop};
  std::shared_ptr<CountingScene> scene = std::make_shared<CountingScene>();
  std::shared_ptr<kit::Timer> spawnTimer;
};

// The same bodies in a bare engine world: dynamic sensors, sleeping off,
// the engine's own category filter, moved by SetTransform every frame.
struct BareWorld final : b2ContactListener {
  static constexpr float kPointsPerMetre = 32;

  explicit BareWorld(int n) : band(bandFor(n)) {
    world.SetAllowSleeping(false);
    world.SetContinuousPhysics(false);
    world.SetContactListener(this);
    for (int lane : {0, 3}) {
      bodies.push_back(
          add(false, laneX(lane), kCarY, kCarW, kCarH, kCarCategory, kObstacleCategory));
      top.push_back(kCarY);
      y.push_back(kCarY);
    }
    for (const Placement& p : placements(n, band)) {
      bodies.push_back(
          add(p.circle, p.x, p.y, kObstacleW, kObstacleH, kObstacleCategory, kCarCategory));
      top.push_back(p.y);
      y.push_back(p.y);
    }
  }

  b2Body* add(bool circle, double x, double yPos, double w, double h, uint16_t category,
              uint16_t mask) {
    b2BodyDef def;
    def.type = b2_dynamicBody;
    def.gravityScale = 0;
    def.position.Set(float(x) / kPointsPerMetre, float(yPos) / kPointsPerMetre);
    b2Body* b = world.CreateBody(&def);
    b2CircleShape round;
    round.m_radius = float(w * 0.5) / kPointsPerMetre;
    b2PolygonShape box;
    box.SetAsBox(float(w * 0.35) / kPointsPerMetre, float(h * 0.47) / kPointsPerMetre);
    b2FixtureDef fixture;
    fixture.isSensor = true;
    fixture.shape = circle ? static_cast<b2Shape*>(&round) : &box;
    fixture.filter.categoryBits = category;
    fixture.filter.maskBits = mask;
    b->CreateFixture(&fixture);
    return b;
  }

  void BeginContact(b2Contact*) override { ++contacts; }

  void frame() {
    for (std::size_t i = 2; i < bodies.size(); ++i) {
      y[i] -= kSpeed * kFrameSeconds;
      if (y[i] < top[i] - band)
        y[i] += band;
    }
    for (std::size_t i = 0; i < bodies.size(); ++i) {
      bodies[i]->SetTransform(b2Vec2(bodies[i]->GetPosition().x, float(y[i]) / kPointsPerMetre), 0);
    }
    world.Step(float(kFrameSeconds), 1, 1);
  }

  double band;
  b2World world{b2Vec2(0, 0)};
  std::vector<b2Body*> bodies;
  std::vector<double> top, y;
  int64_t contacts = 0;
};

double threadSeconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

void BM_SceneFrameAgainstBareEngine(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  SceneWorld scene(n);
  BareWorld bare(n);

  double oursSeconds = 0, engineSeconds = 0;
  for (auto _ : state) {
    const double start = threadSeconds();
    scene.frame();
    const double middle = threadSeconds();
    bare.frame();
    const double end = threadSeconds();
    oursSeconds += middle - start;
    engineSeconds += end - middle;
    state.SetIterationTime(middle - start);
  }
  const double frames = static_cast<double>(state.iterations());
  state.counters["frame_share"] = oursSeconds / frames / kFrameSeconds;
  state.counters["bare_share"] = engineSeconds / frames / kFrameSeconds;
  state.counters["ratio"] = oursSeconds / engineSeconds;
  state.counters["contacts_per_s"] =
      static_cast<double>(scene.scene->contacts) / (frames * kFrameSeconds);
  state.counters["bare_contacts_per_s"] =
      static_cast<double>(bare.contacts) / (frames * kFrameSeconds);
}

BENCHMARK(BM_SceneFrameAgainstBareEngine)
    ->Arg(20)
    ->Arg(200)
    ->Arg(2000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
