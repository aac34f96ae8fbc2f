// The run's flow: touch routing, starting and ending a run, the best score,
// and the buttons' handlers.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "game/game_scene.h"
#include "game/tuning.h"
#include "kit/scene/action.h"
#include "names/notification_names.h"
#include "names/preference_keys.h"
#include "names/store_link.h"

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
  if (!startFlag_ && !overFlag_) {
    route = Route::Home;
  } else if (homeFlag_) {
    route = overFlag_ ? Route::Home : Route::Steer;
  } else {
    route = overFlag_ ? Route::Over : Route::Steer;
  }

  switch (route) {
    case Route::Steer:
      steer(touches);
      break;
    case Route::Home:
      // Alpha is not consulted: the invisible help button starts a run too.
      if (hit(playBtn_, p)) {
        startFrom(homeLayer_);
      } else if (hit(soundBtn_, p)) {
        toggleSound();
      } else if (hit(rateBtn_, p)) {
        rateUs();
      } else if (hit(helpPlayBtn_, p)) {
        startFrom(helpLayer_);
      }
      break;
    case Route::Over:
      // Taps are ignored until the screen has fully faded in.
      if (overLayer_->alpha() != 1.0)
        break;
      if (hit(againBtn_, p)) {
        startFrom(overLayer_);
      } else if (hit(homeBtn_, p)) {
        goHome();
      } else if (hit(overRateBtn_, p)) {
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
  layer->runAction(kit::Action::fadeOutWithDuration(tuning::kStartFadeSeconds), [this, faded] {
    faded->setAlpha(0);
    startFlag_ = true;
    newGame();
  });
}

void GameScene::newGame() {
  const double W = size().width, H = size().height;

  obstacleLayer_->removeAllChildren();
  obstacleLayer_->removeAllActions();

  leftSmoke_->setHidden(true);
  rightSmoke_->setHidden(true);
  leftSmoke_->removeAllActions();
  rightSmoke_->removeAllActions();

  for (const auto& obstacle : allObstacle_) {
    obstacle->removeAllActions();
    obstacle->removeFromParent();
  }
  allObstacle_.clear();

  leftCar_->setPosition({W * tuning::kHalfRoadWidth, leftCar_->position().y});
  leftCar_->setCarpos(0);
  leftCar_->setZRotation(0);
  rightCar_->setPosition({W * 7 * tuning::kHalfRoadWidth, rightCar_->position().y});
  rightCar_->setZRotation(0);
  rightCar_->setCarpos(1);

  overFlag_ = false;
  homeFlag_ = false;
  score_ = 0;
  scoreNode_->setText(std::to_string(score_));

  for (Road& each : roads_)
    each.nexttick = nextSpawnTick();
  for (Road& each : roads_) {
    each.tickcnt = 0;
    each.lastnode = nullptr;
  }

  helpLayer_->setAlpha(0);
  homeLayer_->setAlpha(0);
  overLayer_->setAlpha(0);

  leftLineNode_->setPosition({W * tuning::kRoadWidth, H});
  rightLineNode_->setPosition({W * 3 * tuning::kRoadWidth, H});
  // The lines scroll at the obstacles' speed. Scrolling already running is
  // left alone: only gameOver stops it.
  for (const auto& line : {leftLineNode_, rightLineNode_}) {
    line->runAction(kit::Action::repeatActionForever(
        kit::Action::sequence({kit::Action::moveBy({0, -H}, tuning::kSceneFallSeconds),
                               kit::Action::moveBy({0, H}, 0)})));
  }

  enableTimer(true);
}

void GameScene::gameOver(kit::Point point, int which, kit::NodePtr hitnode) {
  if (overFlag_)
    return;
  overFlag_ = true;
  startFlag_ = false;
  enableTimer(false);

  // Everything freezes where it is until the next newGame.
  for (const auto& obstacle : allObstacle_)
    obstacle->removeAllActions();
  leftCar_->removeAllActions();
  rightCar_->removeAllActions();
  leftLineNode_->removeAllActions();
  rightLineNode_->removeAllActions();

  if (!hitnode) {
    if (which != 0) {
      rightCarCrush(point);
    } else {
      leftCarCrush(point);
    }
  }

  overScoreNode_->setText(std::to_string(score_));

  // A score equal to the best is not a record.
  const int64_t best = services_.defaults.integerForKey(prefkey::kBest);
  if (score_ > best) {
    services_.defaults.setInteger(score_, prefkey::kBest);
    services_.defaults.synchronize();
    overBestNode_->setText("新记录");
  } else {
    overBestNode_->setText("记 录 : " + std::to_string(best));
  }

  if (hitnode) {
    // The let-through circle blinks twice instead of a crash.
    hitnode->runAction(kit::Action::sequence({
        kit::Action::fadeAlphaTo(0.4, tuning::kBlinkSeconds),
        kit::Action::fadeAlphaTo(1.0, tuning::kBlinkSeconds),
        kit::Action::fadeAlphaTo(0.4, tuning::kBlinkSeconds),
        kit::Action::fadeAlphaTo(1.0, tuning::kBlinkSeconds),
    }));
  }

  overLayer_->runAction(
      kit::Action::sequence({kit::Action::waitForDuration(tuning::kOverDelaySeconds),
                             kit::Action::fadeInWithDuration(tuning::kOverFadeSeconds)}),
      [this] {
        overLayer_->setAlpha(1.0);
        services_.notifications.postNotificationName(notification::kShowAd);
      });
}

void GameScene::toggleSound() {
  soundFlag_ = !soundFlag_;
  // Written without a synchronise, as the switch always was.
  services_.defaults.setBool(soundFlag_, prefkey::kSound);
  if (soundBtn_)
    soundBtn_->setTexture(kit::Texture(soundFlag_ ? "soundon" : "soundoff"));
  services_.notifications.postNotificationName(notification::kSoundChange, kit::Value(soundFlag_));
}

void GameScene::goHome() {
  overLayer_->setAlpha(0);
  homeLayer_->runAction(kit::Action::fadeInWithDuration(tuning::kHomeFadeSeconds), [this] {
    homeLayer_->setAlpha(1);
    homeFlag_ = true;
  });
}

void GameScene::rateUs() {
  services_.urlOpener.openURL(storelink::gamePage(services_.bundle));
}
