#include "app/game_application.h"

#include "kit/scene/frame_driver.h"
#include "ui/view_toast.h"

GameApplication::GameApplication(Options options, HostServices& host, const kit::Services& services,
                                 kit::WindowSystem* windows)
    : application_(
          std::make_unique<kit::Application>(options.application, delegate_, services, windows)) {
  wire(options, host, services);
}

GameApplication::~GameApplication() {
  setToastLog(previousToastLog_);
}

void GameApplication::wire(const Options& options, HostServices& host,
                           const kit::Services& services) {
  previousToastLog_ = setToastLog(&services.log);
  autoplay_ = options.autoplay;
  const std::optional<unsigned> seed = options.seed;
  application_->registerViewControllerClass("ViewController", [this, &host, services, seed] {
    controller_ = std::make_shared<ViewController>(services, host, seed);
    return controller_;
  });
  application_->setPrimaryButtonHook([this] { return primaryButton(); });
  application_->setFrameHook([this] {
    if (!autoplay_)
      return;
    if (auto s = scene()) {
      auto touches = autoplayer_.touchesFor(*s);
      if (!touches.empty())
        application_->frameDriver().touchesBegan(std::move(touches));
    }
  });
}

kit::Status GameApplication::launch() {
  return application_->launch();
}

int GameApplication::run(std::optional<uint64_t> frameLimit) {
  return application_->run(frameLimit);
}

std::shared_ptr<GameScene> GameApplication::scene() const {
  return controller_ ? controller_->gameScene : nullptr;
}

std::optional<kit::Point> GameApplication::primaryButton() const {
  const auto s = scene();
  if (!s)
    return std::nullopt;
  // The same screens the scene's touch routing answers on.
  if (!s->startFlag() && !s->overFlag() && s->homeLayer().alpha() == 1.0) {
    return Autoplayer::centreInScene(s->playBtn());
  }
  if (s->overFlag() && !s->homeFlag() && s->overLayer().alpha() == 1.0) {
    return Autoplayer::centreInScene(s->againBtn());
  }
  return std::nullopt;
}
