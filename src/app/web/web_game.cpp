#include "app/web/web_game.h"

#include <algorithm>
#include <chrono>

#include "app/scene_dump.h"
#include "game/game_scene.h"
#include "kit/backends/web/mailto_sink.h"
#include "kit/backends/web/page_hooks.h"
#include "kit/foundation/json.h"
#include "kit/foundation/preferred_languages.h"
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
      }) {
  GameApplication::Options game;
  game.application.title = "Twin Lanes";
  game.application.profile = options_.device;
  game.seed = options_.seed;
  game.autoplay = options_.autoplay;
  game_ = std::make_unique<GameApplication>(game, ads_, services_.services(), &windows_);
  kit::registerPreferredLanguages(services_.defaults, options_.language);
}

WebGame::~WebGame() {
  // The ads borrow the game's services: they stop before the game goes.
  ads_.stop();
}

bool WebGame::launch(std::string* error) {
  ads_.start(game_->application().services(), false);
  kit::Status launched = game_->launch();
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
    game_->application().pollEvents();
    return true;
  }
  const auto start = std::chrono::steady_clock::now();
  game_->application().runFrame();
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

std::string WebGame::dump() const {
  const auto s = game_->scene();
  if (!s)
    return "null";
  kit::Value::Dictionary state = describeScene(*s);
  state["notifications"] = kit::Value::Dictionary{
      {"showad", static_cast<long long>(services_.notifications.postCount(notification::kShowAd))},
      {"soundchange",
       static_cast<long long>(services_.notifications.postCount(notification::kSoundChange))}};
  if (ads_.network())
    state["ads"] = ads_.describe();
  state["alert"] = describeAlert(&game_->application());
  state["toasts"] = describeToasts(&game_->application());
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
