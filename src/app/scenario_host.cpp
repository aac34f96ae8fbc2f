#include "app/scenario_host.h"

HeadlessHost::HeadlessHost(const kit::Services& services)
    : services_(services), driver_(services.runLoop) {}

void HeadlessHost::start(kit::Size viewSize, std::optional<unsigned> seed) {
  kit::UserDefaults& defaults = services_.defaults;
  defaults.registerDefaults({{"best", 0}, {"first", true}, {"sound", true}, {"cnt", 0}});
  // Every launch starts the interstitial count afresh.
  defaults.setBool(true, "first");
  defaults.setInteger(0, "cnt");
  defaults.synchronize();

  scene_ = GameScene::sceneWithSize(viewSize, services_, seed);
  scene_->setScaleMode(kit::SceneScaleMode::AspectFill);
  driver_.presentScene(scene_);
}
