#include "app/scene_dump.h"

#include <algorithm>
#include <memory>

#include "kit/render/application.h"
#include "kit/render/sprite_view.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/label.h"
#include "kit/ui/window.h"

namespace {

using kit::Value;

Value describeCar(const Car& car) {
  return Value::Dictionary{{"x", car.position().x},       {"y", car.position().y},
                           {"w", car.size().width},       {"h", car.size().height},
                           {"carpos", car.carpos()},      {"caridx", car.caridx()},
                           {"zRotation", car.zRotation()}};
}

Value describeObstacle(const Obstacle& obstacle) {
  return Value::Dictionary{{"type", static_cast<int>(obstacle.type())},
                           {"cr", obstacle.cr()},
                           {"x", obstacle.position().x},
                           {"y", obstacle.position().y},
                           {"w", obstacle.size().width},
                           {"h", obstacle.size().height},
                           {"alpha", obstacle.alpha()},
                           {"moving", obstacle.hasActions()}};
}

// Index into allObstacle, null for none, "collected" for a spawn that has
// left the list.
Value describeLastnode(const GameScene& scene, const std::shared_ptr<Obstacle>& node) {
  if (!node)
    return Value();
  const auto& all = scene.allObstacle();
  const auto it = std::find(all.begin(), all.end(), node);
  if (it == all.end())
    return Value("collected");
  return Value(static_cast<long long>(it - all.begin()));
}

// One entry per road, from road 1 to road 4.
template <typename Describe>
Value perRoad(Describe describe) {
  Value::Array roads;
  for (int idx = 1; idx <= 4; ++idx)
    roads.push_back(describe(idx));
  return roads;
}

Value describeSmoke(const kit::SpriteNode& smoke) {
  return Value::Dictionary{{"hidden", smoke.hidden()},
                           {"x", smoke.position().x},
                           {"y", smoke.position().y},
                           {"animating", smoke.actionForKey("crush") != nullptr}};
}

Value describeLine(const kit::SpriteNode& line) {
  return Value::Dictionary{{"x", line.position().x},
                           {"y", line.position().y},
                           {"actions", static_cast<long long>(line.actionCount())}};
}

}  // namespace

kit::Value::Dictionary describeScene(const GameScene& scene) {
  Value::Array obstacles;
  for (const auto& obstacle : scene.allObstacle())
    obstacles.push_back(describeObstacle(*obstacle));

  return {
      {"startFlag", scene.startFlag()},
      {"overFlag", scene.overFlag()},
      {"homeFlag", scene.homeFlag()},
      {"soundFlag", scene.soundFlag()},
      {"score", scene.score()},
      {"tickcnt", perRoad([&](int idx) { return Value(scene.tickcnt(idx)); })},
      {"nexttick", perRoad([&](int idx) { return Value(scene.nexttick(idx)); })},
      {"leftCar", describeCar(scene.leftCar())},
      {"rightCar", describeCar(scene.rightCar())},
      {"obstacles", obstacles},
      {"lastnode", perRoad([&](int idx) { return describeLastnode(scene, scene.lastnode(idx)); })},
      {"layers", Value::Dictionary{{"home", scene.homeLayer().alpha()},
                                   {"help", scene.helpLayer().alpha()},
                                   {"over", scene.overLayer().alpha()}}},
      {"labels", Value::Dictionary{{"score", scene.scoreNode().text()},
                                   {"overScore", scene.overScoreNode().text()},
                                   {"overBest", scene.overBestNode().text()}}},
      {"smoke", Value::Dictionary{{"left", describeSmoke(scene.leftSmoke())},
                                  {"right", describeSmoke(scene.rightSmoke())}}},
      {"lines", Value::Dictionary{{"left", describeLine(scene.leftLineNode())},
                                  {"right", describeLine(scene.rightLineNode())}}},
  };
}

kit::Value describeAlert(const kit::Application* app) {
  auto window = app ? app->window() : nullptr;
  auto shown = window ? kit::AlertView::visibleAlert(*window) : nullptr;
  if (!shown)
    return kit::Value();
  kit::Value::Array buttons;
  for (int i = 0; i < shown->numberOfButtons(); ++i)
    buttons.emplace_back(shown->buttonTitleAtIndex(i));
  return kit::Value::Dictionary{{"title", shown->title()},
                                {"message", shown->message()},
                                {"buttons", std::move(buttons)},
                                {"tag", shown->tag()}};
}

kit::Value::Array describeToasts(const kit::Application* app) {
  // Toasts lie on the game's view while they are up.
  kit::Value::Array toasts;
  auto gameView = app ? app->spriteView() : nullptr;
  if (!gameView)
    return toasts;
  for (const auto& toast : gameView->subviews()) {
    if (toast->isHidden() || toast->presentationAlpha() <= 0)
      continue;
    for (const auto& part : toast->subviews()) {
      if (auto label = std::dynamic_pointer_cast<kit::Label>(part))
        toasts.emplace_back(label->text());
    }
  }
  return toasts;
}
