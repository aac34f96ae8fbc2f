// The run's flow: touch routing, starting and ending a run, the best score,
// and the buttons' handlers.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "game/game_scene.h"
#include "kit/scene/action.h"

namespace {

// A button that was never created is never hit.
bool hit(const std::shared_ptr<kit::SpriteNode>& button, kit::Point point) {
  return button && button->containsPoint(point);
}

}  // namespace

void GameScene::touchesBegan(const kit::TouchSet& touches, const kit::Event* event) {
  (void)event;
  const kit::Touch* any = touches.anyObject();
  if (!any)
    return;
  // Buttons hang off layers anchored at the scene's origin, so their parents'
  // coordinates are scene coordinates.
  const kit::Point p = any->locationInNode(*this);

  enum class Route { Home, Steer, Over };
  Route route;
  if (!startFlag && !overFlag) {
    route = Route::Home;
  } else if (homeFlag) {
    route = overFlag ? Route::Home : Route::Steer;
  } else {
    route = overFlag ? Route::Over : Route::Steer;
  }

  switch (route) {
    case Route::Steer:
      steer(touches);
      break;
    case Route::Home:
      // Alpha is not consulted: the invisible help button starts a run too.
      if (hit(playBtn, p)) {
        startFrom(homeLayer);
      } else if (hit(soundBtn, p)) {
        toggleSound();
      } else if (hit(rateBtn, p)) {
        rateUs();
      } else if (hit(helpPlayBtn, p)) {
        startFrom(helpLayer);
      }
      break;
    case Route::Over:
      // Taps are ignored until the screen has fully faded in.
      if (overLayer->alpha() != 1.0)
        break;
      if (hit(againBtn, p)) {
        startFrom(overLayer);
      } else if (hit(homeBtn, p)) {
        goHome();
      } else if (hit(overRateBtn, p)) {
        rateUs();
      }
      break;
  }
}

void GameScene::startFrom(const std::shared_ptr<kit::SpriteNode>& layer) {
  // The flags change only when the fade has ended, so a second tap within the
  // 0.1 s starts a second fade and a second run. The block lives on a node of
  // this scene, so it never outlives the scene; the raw pointers stay valid.
  kit::SpriteNode* faded = layer.get();
  layer->runAction(kit::Action::fadeOutWithDuration(0.1), [this, faded] {
    faded->setAlpha(0);
    startFlag = true;
    newGame();
  });
}

void GameScene::newGame() {
  const double W = size().width, H = size().height;

  obstacleLayer->removeAllChildren();
  obstacleLayer->removeAllActions();

  leftSmoke->setHidden(true);
  rightSmoke->setHidden(true);
  leftSmoke->removeAllActions();
  rightSmoke->removeAllActions();

  for (const auto& obstacle : allObstacle) {
    obstacle->removeAllActions();
    obstacle->removeFromParent();
  }
  allObstacle.clear();

  leftCar->setPosition({W * 0.125, leftCar->position().y});
  leftCar->setCarpos(0);
  leftCar->setZRotation(0);
  rightCar->setPosition({W * 7 * 0.125, rightCar->position().y});
  rightCar->setZRotation(0);
  rightCar->setCarpos(1);

  overFlag = false;
  homeFlag = false;
  _score = 0;
  scoreNode->setText(std::to_string(_score));

  nexttick1 = services_.random.next() % 10 + 10;
  nexttick2 = services_.random.next() % 10 + 10;
  nexttick3 = services_.random.next() % 10 + 10;
  nexttick4 = services_.random.next() % 10 + 10;
  tickcnt1 = 0;
  tickcnt2 = 0;
  tickcnt3 = 0;
  tickcnt4 = 0;
  lastnode1 = nullptr;
  lastnode2 = nullptr;
  lastnode3 = nullptr;
  lastnode4 = nullptr;

  helpLayer->setAlpha(0);
  homeLayer->setAlpha(0);
  overLayer->setAlpha(0);

  leftLineNode->setPosition({W * 0.25, H});
  rightLineNode->setPosition({W * 3 * 0.25, H});
  // The lines scroll at the obstacles' speed. Scrolling already running is
  // left alone: only gameOver stops it.
  for (const auto& line : {leftLineNode, rightLineNode}) {
    line->runAction(kit::Action::repeatActionForever(kit::Action::sequence(
        {kit::Action::moveBy({0, -H}, 2.2), kit::Action::moveBy({0, H}, 0)})));
  }

  enableTimer(true);
}

void GameScene::gameOver(kit::Point point, int which, kit::NodePtr hitnode) {
  if (overFlag)
    return;
  overFlag = true;
  startFlag = false;
  enableTimer(false);

  // Everything freezes where it is until the next newGame.
  for (const auto& obstacle : allObstacle)
    obstacle->removeAllActions();
  leftCar->removeAllActions();
  rightCar->removeAllActions();
  leftLineNode->removeAllActions();
  rightLineNode->removeAllActions();

  if (!hitnode) {
    if (which != 0) {
      rightCarCrush(point);
    } else {
      leftCarCrush(point);
    }
  }

  overScoreNode->setText(std::to_string(_score));

  // A score equal to the best is not a record.
  const int64_t best = services_.defaults.integerForKey("best");
  if (_score > best) {
    services_.defaults.setInteger(_score, "best");
    services_.defaults.synchronize();
    overBestNode->setText("新记录");
  } else {
    overBestNode->setText("记 录 : " + std::to_string(best));
  }

  if (hitnode) {
    // The let-through circle blinks twice instead of a crash.
    hitnode->runAction(kit::Action::sequence({
        kit::Action::fadeAlphaTo(0.4, 0.125),
        kit::Action::fadeAlphaTo(1.0, 0.125),
        kit::Action::fadeAlphaTo(0.4, 0.125),
        kit::Action::fadeAlphaTo(1.0, 0.125),
    }));
  }

  overLayer->runAction(kit::Action::sequence({kit::Action::waitForDuration(0.5),
                                              kit::Action::fadeInWithDuration(0.3)}),
                       [this] {
                         overLayer->setAlpha(1.0);
                         services_.notifications.postNotificationName("showad");
                       });
}

void GameScene::toggleSound() {
  soundFlag = !soundFlag;
  // Written without a synchronise, as the switch always was.
  services_.defaults.setBool(soundFlag, "sound");
  if (soundBtn)
    soundBtn->setTexture(kit::Texture(soundFlag ? "soundon" : "soundoff"));
  services_.notifications.postNotificationName("soundchange", kit::Value(soundFlag));
}

void GameScene::goHome() {
  overLayer->setAlpha(0);
  homeLayer->runAction(kit::Action::fadeInWithDuration(0.1), [this] {
    homeLayer->setAlpha(1);
    homeFlag = true;
  });
}

void GameScene::rateUs() {
  const kit::Value host = services_.bundle.infoValue("storeHost");
  const kit::Value appStoreId = services_.bundle.infoValue("appStoreId");
  // The identifier is printed as a signed 32-bit number, as the store link
  // always was.
  const auto id = static_cast<int32_t>(appStoreId.integerValue());
  services_.urlOpener.openURL("itms-apps://" + host.stringValue().value_or("") + "/app/id" +
                              std::to_string(id));
}
