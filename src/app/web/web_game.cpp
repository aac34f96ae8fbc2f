#include "app/web/web_game.h"

#include <algorithm>
#include <chrono>

#include "app/scene_dump.h"
#include "game/game_scene.h"
#include "kit/backends/web/mailto_sink.h"
#include "kit/backends/web/page_hooks.h"
#include "kit/foundation/json.h"
#include "kit/foundation/preferred_languages.h"
#include "kit/render/sprite_view.h"
#include "kit/scene/frame_driver.h"
#include "kit/ui/window.h"
#include "names/notification_names.h"
#include "names/preference_keys.h"

namespace {

constexpr const char* kResourceDir = "/resources";

}  // namespace

WebGame::WebGame(Options options)
    : options_(std::move(options)),
      services_(kResourceDir),
      ads_([](const kit::Services& services) -> std::unique_ptr<kit::MailSink> {
        return std::make_unique<kit::web::MailtoSink>(services.urlOpener);
      }),
      autoplay_(options_.autoplay) {
  kit::ApplicationOptions app;
  app.title = "Twin Lanes";
  app.profile = options_.device;
  application_ =
      std::make_unique<kit::Application>(app, delegate_, services_.services(), &windows_);
  const kit::Services services = application_->services();
  const std::optional<unsigned> seed = options_.seed;
  application_->registerViewControllerClass("ViewController", [this, services, seed] {
    controller_ = std::make_shared<ViewController>(services, ads_, seed);
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
  kit::registerPreferredLanguages(services_.defaults, options_.language);
}

WebGame::~WebGame() {
  // The ads borrow the game's services: they stop before the game goes.
  ads_.stop();
}

bool WebGame::launch(std::string* error) {
  ads_.start(application_->services(), false);
  kit::Status launched = application_->launch();
  if (!launched && error)
    *error = launched.error();
  if (kit::web::WebWindow* window = windows_.window())
    window->events().setWakeUp([this] { frames_.runFrameNow(); });
  return launched.ok();
}

void WebGame::run() {
  frames_.run([this](int64_t) { return frame(); });
}

bool WebGame::frame() {
  kit::web::WebWindow* window = windows_.window();
  if (window && !window->isVisible()) {
    // A hidden page: nothing runs (the lifecycle's background), as on a
    // minimised desktop window; only its events are read.
    application_->pollEvents();
    return true;
  }
  const auto start = std::chrono::steady_clock::now();
  application_->runFrame();
  const double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  ++frames_drawn_;
  wasmMs_ += ms;
  wasmMsMax_ = std::max(wasmMsMax_, ms);
  if (!firstFrameShown_) {
    firstFrameShown_ = true;
    kit::web::firstFrameShown();
  }
  // A page is not quit: the tab closes it.
  return true;
}

std::shared_ptr<GameScene> WebGame::scene() const {
  return controller_ ? controller_->gameScene : nullptr;
}

std::optional<kit::Point> WebGame::primaryButton() const {
  const auto s = scene();
  if (!s)
    return std::nullopt;
  if (!s->startFlag() && !s->overFlag() && s->homeLayer().alpha() == 1.0)
    return Autoplayer::centreInScene(s->playBtn());
  if (s->overFlag() && !s->homeFlag() && s->overLayer().alpha() == 1.0)
    return Autoplayer::centreInScene(s->againBtn());
  return std::nullopt;
}

std::string WebGame::dump() const {
  const auto s = scene();
  if (!s)
    return "null";
  kit::Value::Dictionary state = describeScene(*s);
  state["notifications"] = kit::Value::Dictionary{
      {"showad", static_cast<long long>(services_.notifications.postCount(notification::kShowAd))},
      {"soundchange",
       static_cast<long long>(services_.notifications.postCount(notification::kSoundChange))}};
  if (ads_.network())
    state["ads"] = ads_.describe();
  state["alert"] = describeAlert(application_.get());
  state["toasts"] = describeToasts(application_.get());
  const std::optional<kit::Value::Array> languages =
      services_.defaults.arrayForKey(prefkey::kLanguages);
  state["language"] = languages && !languages->empty() ? languages->front() : kit::Value();
  return kit::toJson(kit::Value(std::move(state)));
}

std::string WebGame::stats() const {
  const double frames = static_cast<double>(std::max<int64_t>(frames_drawn_, 1));
  return kit::toJson(
      kit::Value(kit::Value::Dictionary{{"frames", static_cast<long long>(frames_drawn_)},
                                        {"wasmMsPerFrame", wasmMs_ / frames},
                                        {"wasmMsMax", wasmMsMax_}}));
}

void WebGame::resetStats() {
  frames_drawn_ = 0;
  wasmMs_ = 0;
  wasmMsMax_ = 0;
}
