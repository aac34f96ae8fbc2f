// Play inside a run: the spawn timer and the falling obstacles, the
// let-through check, steering, contacts and the crash flames.

#include <algorithm>
#include <cstdlib>
#include <numbers>

#include "game/game_scene.h"
#include "kit/scene/action.h"
#include "kit/scene/physics_body.h"

// --- Spawning -------------------------------------------------------------------

void GameScene::enableTimer(bool enable) {
  _timer->setFireDate(enable ? kit::Timer::kDistantPast : kit::Timer::kDistantFuture);
}

void GameScene::tickCount() {
  ++tickcnt1;
  ++tickcnt2;
  ++tickcnt3;
  ++tickcnt4;
  // Thresholds lie in 10..19 and counts restart at 0, so equality is reached.
  if (tickcnt1 == nexttick1) {
    addObstacleInRoadIdx(1);
    nexttick1 = services_.random.next() % 10 + 10;
    tickcnt1 = 0;
  }
  if (tickcnt2 == nexttick2) {
    addObstacleInRoadIdx(2);
    nexttick2 = services_.random.next() % 10 + 10;
    tickcnt2 = 0;
  }
  if (tickcnt3 == nexttick3) {
    addObstacleInRoadIdx(3);
    nexttick3 = services_.random.next() % 10 + 10;
    tickcnt3 = 0;
  }
  if (tickcnt4 == nexttick4) {
    addObstacleInRoadIdx(4);
    nexttick4 = services_.random.next() % 10 + 10;
    tickcnt4 = 0;
  }
}

void GameScene::addObstacleInRoadIdx(int idx) {
  if (idx < 1 || idx > 4)
    return;
  const double W = size().width, H = size().height;
  const double ow = W * 0.25 * 0.6;
  const double oh = ow * 0.65;

  int kind = services_.random.next() % 2;
  if (kind == 1) {
    // Never two rectangles side by side in one car's roads: while the
    // partner road's latest rectangle is still close to the top, a circle
    // comes instead. The left car's height serves both halves.
    const std::shared_ptr<Obstacle>& q = idx == 1   ? lastnode2
                                         : idx == 2 ? lastnode1
                                         : idx == 3 ? lastnode4
                                                    : lastnode3;
    if (q && q->type() == 1) {
      const double gap = H + q->size().height - q->position().y;
      if (gap < leftCar->size().height * 1.8)
        kind = 0;
    }
  }

  // From a score of 10 on, the tag is drawn at random (one more rand()).
  int cr;
  if (_score > 9) {
    cr = services_.random.next() % 2;
  } else {
    cr = idx <= 2 ? 0 : 1;
  }
  auto node =
      std::make_shared<Obstacle>(kit::Texture(kind == 1 ? "rect" : "circle"), kit::Size{ow, oh});
  node->setCr(cr);
  node->setType(kind);
  // The lower edge starts on the top edge of the scene.
  node->setPosition({static_cast<double>(2 * idx - 1) * W * 0.125, H + oh * 0.5});

  switch (idx) {
    case 1:
      lastnode1 = node;
      break;
    case 2:
      lastnode2 = node;
      break;
    case 3:
      lastnode3 = node;
      break;
    default:
      lastnode4 = node;
      break;
  }
  obstacleLayer->addChild(node);
  allObstacle.push_back(node);

  auto body = node->type() != 0 ? kit::PhysicsBody::bodyWithRectangleOfSize({ow * 0.7, oh * 0.94})
                                : kit::PhysicsBody::bodyWithCircleOfRadius(ow * 0.5);
  body->setCategoryBitMask(kObstacleCategory);
  body->setContactTestBitMask(kCarCategory);
  body->setCollisionBitMask(0);
  body->setAffectedByGravity(false);
  node->setPhysicsBody(body);

  // One scene height every 2.2 s, whatever the score; the obstacle stays
  // where the move ends, just below the scene.
  node->runAction(kit::Action::moveToY(-oh * 0.5, (H + oh) * 2.2 / H));
}

void GameScene::update(double currentTime) {
  (void)currentTime;
  const double ch = leftCar->size().height;
  const double carY = leftCar->position().y;
  for (const auto& o : allObstacle) {
    if (o->type() != 0)
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
  overLayer->setAlpha(0);
  helpLayer->setAlpha(0);
  homeLayer->setAlpha(0);
}

void GameScene::leftCarChangeRoad() {
  changeRoad(*leftCar);
}

void GameScene::rightCarChangeRoad() {
  changeRoad(*rightCar);
}

void GameScene::changeRoad(Car& car) {
  // carpos flips at once; the tilt and the move are relative and run beside
  // whatever the car is already doing, so a quick second tap undoes the first.
  constexpr double kTilt = std::numbers::pi / 6;
  const double step = size().width * 0.25;
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
  car.runAction(kit::Action::sequence(
      {kit::Action::rotateByAngle(tilt, 0.05), kit::Action::rotateByAngle(-tilt, 0.05)}));
  car.runAction(kit::Action::moveBy({dx, 0}, 0.1), [] {});
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

  if (obstacle->type() != 0) {
    const kit::Point point{(obstacle->position().x + car->position().x) * 0.5,
                           (obstacle->position().y + car->position().y) * 0.5};
    gameOver(point, car->caridx(), nullptr);
    return;
  }
  // No state check: everything stands still once a run has ended.
  _score = _score + 1;
  scoreNode->setText(std::to_string(_score));
  obstacle->removeFromParent();
  std::erase(allObstacle, obstacle);
}

namespace {

void crush(kit::SpriteNode& smoke, const std::vector<kit::Texture>& frames, kit::Point point) {
  smoke.setPosition(point);
  smoke.setHidden(false);
  smoke.runAction(
      kit::Action::repeatActionForever(kit::Action::animateWithTextures(frames, 0.15, false, true)),
      "crush");
}

}  // namespace

void GameScene::leftCarCrush(kit::Point point) {
  crush(*leftSmoke, smokeAnim, point);
}

void GameScene::rightCarCrush(kit::Point point) {
  crush(*rightSmoke, smokeAnim, point);
}
