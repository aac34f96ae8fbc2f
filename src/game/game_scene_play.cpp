// Play inside a run: the spawn timer and the falling obstacles, the
// let-through check, steering, contacts and the crash flames.

#include <algorithm>
#include <cstdlib>
#include <numbers>

#include "game/game_scene.h"
#include "game/tuning.h"
#include "kit/foundation/assert.h"
#include "kit/scene/action.h"
#include "kit/scene/physics_body.h"

// --- Spawning -------------------------------------------------------------------

void GameScene::enableTimer(bool enable) {
  timer_->setFireDate(enable ? kit::Timer::kDistantPast : kit::Timer::kDistantFuture);
}

void GameScene::tickCount() {
  for (Road& each : roads_)
    ++each.tickcnt;
  // Thresholds lie in 10..19 and counts restart at 0, so equality is reached.
  for (int idx = 1; idx <= kRoadCount; ++idx) {
    if (road(idx).tickcnt == road(idx).nexttick) {
      addObstacleInRoadIdx(idx);
      road(idx).nexttick = nextSpawnTick();
      road(idx).tickcnt = 0;
    }
  }
}

int GameScene::nextSpawnTick() {
  return services_.random.next() % tuning::kSpawnTickChoices + tuning::kFirstSpawnTick;
}

bool GameScene::validRoad(int idx) {
  return idx >= 1 && idx <= kRoadCount;
}

const GameScene::Road& GameScene::road(int idx) const {
  if (!KIT_ASSERT(validRoad(idx), "road index out of range (roads are 1 to 4)"))
    idx = 1;
  return roads_[static_cast<std::size_t>(idx - 1)];
}

void GameScene::addObstacleInRoadIdx(int idx) {
  if (!KIT_ASSERT(validRoad(idx), "road index out of range (roads are 1 to 4)"))
    return;
  const double W = size().width, H = size().height;
  const double ow = W * tuning::kRoadWidth * tuning::kObstacleWidth;
  const double oh = ow * tuning::kObstacleAspect;

  auto kind = static_cast<ObstacleKind>(services_.random.next() % 2);
  if (kind == ObstacleKind::Rectangle) {
    // Never two rectangles side by side in one car's roads: while the
    // partner road's latest rectangle is still close to the top, a circle
    // comes instead. The left car's height serves both halves.
    const int partner = idx % 2 == 1 ? idx + 1 : idx - 1;
    const std::shared_ptr<Obstacle>& q = road(partner).lastnode;
    if (q && q->type() == ObstacleKind::Rectangle) {
      const double gap = H + q->size().height - q->position().y;
      if (gap < leftCar_->size().height * tuning::kRectangleGap)
        kind = ObstacleKind::Circle;
    }
  }

  // From a score of 10 on, the tag is drawn at random (one more draw).
  int cr;
  if (score_ > 9) {
    cr = services_.random.next() % 2;
  } else {
    cr = idx <= 2 ? 0 : 1;
  }
  auto node = std::make_shared<Obstacle>(
      kit::Texture(kind == ObstacleKind::Rectangle ? "rect" : "circle"), kit::Size{ow, oh});
  node->setCr(cr);
  node->setType(kind);
  // The lower edge starts on the top edge of the scene.
  node->setPosition({static_cast<double>(2 * idx - 1) * W * tuning::kHalfRoadWidth, H + oh * 0.5});

  road(idx).lastnode = node;
  obstacleLayer_->addChild(node);
  allObstacle_.push_back(node);

  auto body = node->type() == ObstacleKind::Rectangle
                  ? kit::PhysicsBody::bodyWithRectangleOfSize(
                        {ow * tuning::kHitWidth, oh * tuning::kHitHeight})
                  : kit::PhysicsBody::bodyWithCircleOfRadius(ow * 0.5);
  body->setCategoryBitMask(kObstacleCategory);
  body->setContactTestBitMask(kCarCategory);
  body->setCollisionBitMask(0);
  body->setAffectedByGravity(false);
  node->setPhysicsBody(body);

  // One scene height every 2.2 s, whatever the score; the obstacle stays
  // where the move ends, just below the scene.
  node->runAction(kit::Action::moveToY(-oh * 0.5, (H + oh) * tuning::kSceneFallSeconds / H));
}

void GameScene::update(double currentTime) {
  (void)currentTime;
  const double ch = leftCar_->size().height;
  const double carY = leftCar_->position().y;
  for (const auto& o : allObstacle_) {
    if (o->type() != ObstacleKind::Circle)
      continue;
    const double m = o->position().y + o->size().height * 0.5 + ch * 0.5 + o->size().height * 0.1;
    if (m < carY) {
      // Let through. After the run has ended this comes back every frame
      // and gameOver ignores it.
      auto circle = o;
      gameOver({0, 0}, 0, circle);
      break;
    }
  }
}

// --- Steering -------------------------------------------------------------------

void GameScene::steer(const kit::TouchSet& touches) {
  const double half = size().width * 0.5;
  bool left = false, right = false;
  for (const kit::Touch& touch : touches) {
    if (touch.locationInNode(*this).x < half) {
      left = true;
    } else {
      right = true;
    }
  }
  if (left)
    leftCarChangeRoad();
  if (right)
    rightCarChangeRoad();
  overLayer_->setAlpha(0);
  helpLayer_->setAlpha(0);
  homeLayer_->setAlpha(0);
}

void GameScene::leftCarChangeRoad() {
  changeRoad(*leftCar_);
}

void GameScene::rightCarChangeRoad() {
  changeRoad(*rightCar_);
}

void GameScene::changeRoad(Car& car) {
  // carpos flips at once; the tilt and the move are relative and run beside
  // whatever the car is already doing, so a quick second tap undoes the first.
  constexpr double kTilt = std::numbers::pi / 6;
  const double step = size().width * tuning::kRoadWidth;
  double tilt, dx;
  if (car.carpos() != 0) {
    car.setCarpos(0);
    tilt = kTilt;
    dx = -step;
  } else {
    car.setCarpos(1);
    tilt = -kTilt;
    dx = step;
  }
  car.runAction(
      kit::Action::sequence({kit::Action::rotateByAngle(tilt, tuning::kLaneChangeSeconds / 2),
                             kit::Action::rotateByAngle(-tilt, tuning::kLaneChangeSeconds / 2)}));
  car.runAction(kit::Action::moveBy({dx, 0}, tuning::kLaneChangeSeconds), [] {});
}

// --- Contacts and crash -------------------------------------------------------------

void GameScene::didBeginContact(const kit::PhysicsContact& contact) {
  kit::NodePtr a = contact.bodyA ? contact.bodyA->node() : nullptr;
  kit::NodePtr b = contact.bodyB ? contact.bodyB->node() : nullptr;
  std::shared_ptr<Obstacle> obstacle = std::dynamic_pointer_cast<Obstacle>(b);
  std::shared_ptr<Car> car;
  if (obstacle) {
    car = std::dynamic_pointer_cast<Car>(a);
  } else {
    obstacle = std::dynamic_pointer_cast<Obstacle>(a);
    car = std::dynamic_pointer_cast<Car>(b);
  }
  // The masks only let car-obstacle pairs through.
  if (!obstacle || !car)
    return;

  if (obstacle->type() == ObstacleKind::Rectangle) {
    const kit::Point point{(obstacle->position().x + car->position().x) * 0.5,
                           (obstacle->position().y + car->position().y) * 0.5};
    gameOver(point, car->caridx(), nullptr);
    return;
  }
  // No state check: everything stands still once a run has ended.
  score_ = score_ + 1;
  scoreNode_->setText(std::to_string(score_));
  obstacle->removeFromParent();
  std::erase(allObstacle_, obstacle);
}

namespace {

void crush(kit::SpriteNode& smoke, const std::vector<kit::Texture>& frames, kit::Point point) {
  smoke.setPosition(point);
  smoke.setHidden(false);
  smoke.runAction(kit::Action::repeatActionForever(kit::Action::animateWithTextures(
                      frames, tuning::kFlameFrameSeconds, false, true)),
                  "crush");
}

}  // namespace

void GameScene::leftCarCrush(kit::Point point) {
  crush(*leftSmoke_, smokeAnim_, point);
}

void GameScene::rightCarCrush(kit::Point point) {
  crush(*rightSmoke_, smokeAnim_, point);
}
