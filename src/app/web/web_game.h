#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "app/game_ads.h"
#include "app/game_application.h"
#include "kit/backends/web/animation_frame_host.h"
#include "kit/backends/web/web_services.h"
#include "kit/backends/web/web_window_system.h"

// The game in the page: the browser backend's services and window under the
// same GameApplication as the desktop's, the ads with the mailto: sink, and
// frames from requestAnimationFrame. Preferences are saved to localStorage
// whenever the game synchronizes them. The page's tools
// (window.twinlanes) read dump() and stats(). Lives as long as the page;
// main thread only.
class WebGame {
 public:
  struct Options {
    std::optional<unsigned> seed;
    std::string device = "phone";
    std::optional<std::string> language;
    bool autoplay = false;
  };

  explicit WebGame(Options options);
  ~WebGame();
  WebGame(const WebGame&) = delete;
  WebGame& operator=(const WebGame&) = delete;

  // Launches the application; false with the reason in `error`.
  bool launch(std::string* error);
  // Hands frames to the browser; returns at once, frames come later.
  void run();

  // The state as the scenario command `dump` prints it (scene, ads, alert,
  // toasts, language, opened URLs), as JSON.
  std::string dump() const;
  // Frames drawn and the milliseconds spent in wasm per frame since the last
  // reset, as JSON.
  std::string stats() const;
  void resetStats();
  void setAutoplay(bool on) { game_->setAutoplay(on); }

 private:
  bool frame();

  Options options_;
  kit::web::WebServices services_;
  kit::web::WebWindowSystem windows_;
  GameAds ads_;
  std::unique_ptr<GameApplication> game_;
  kit::web::AnimationFrameHost frames_;
  bool firstFrameShown_ = false;
  int64_t frames_drawn_ = 0;
  double wasmMs_ = 0;
  double wasmMsMax_ = 0;
};
