#include "app/scenario_host.h"

#include "names/launch_defaults.h"

HeadlessHost::HeadlessHost(const kit::Services& services)
    : services_(services), driver_(services.runLoop) {}

void HeadlessHost::start(kit::Size viewSize, std::optional<unsigned> seed) {
  registerLaunchDefaults(services_.defaults);

  scene_ = GameScene::sceneWithSize(viewSize, services_, seed);
  scene_->setScaleMode(kit::SceneScaleMode::AspectFill);
  driver_.presentScene(scene_);
}
