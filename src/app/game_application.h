#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "app/app_delegate.h"
#include "app/host_services.h"
#include "app/view_controller.h"
#include "game/autoplayer.h"
#include "kit/foundation/result.h"
#include "kit/render/application.h"

// The game as an application: a kit::Application whose layout's
// "ViewController" is the host controller (with the run's seed and the host
// services), whose delegate is AppDelegate, where Space, Enter or a
// controller's A press the play or play-again button that is up, and where a
// built-in player can take the taps (a demo). The host services, the
// services and the window system (the program's backend; null for no window
// at all) are borrowed and outlive it.
class GameApplication {
 public:
  struct Options {
    kit::ApplicationOptions application;
    std::optional<unsigned> seed;
    bool autoplay = false;
  };

  GameApplication(Options options, HostServices& host, const kit::Services& services,
                  kit::WindowSystem* windows = nullptr);
  // Puts back the toast log that was installed before.
  ~GameApplication();
  GameApplication(const GameApplication&) = delete;
  GameApplication& operator=(const GameApplication&) = delete;

  // See kit::Application::launch; the error says why it could not.
  [[nodiscard]] kit::Status launch();
  // The main loop; see kit::Application::run.
  int run(std::optional<uint64_t> frameLimit = std::nullopt);

  void setAutoplay(bool on) { autoplay_ = on; }
  // Where the button that Space presses is (scene points), if one is up.
  std::optional<kit::Point> primaryButton() const;

  kit::Application& application() { return *application_; }
  const std::shared_ptr<AppDelegate>& delegate() const { return delegate_; }
  // Null before launch.
  const std::shared_ptr<ViewController>& viewController() const { return controller_; }
  std::shared_ptr<GameScene> scene() const;

 private:
  void wire(const Options& options, HostServices& host, const kit::Services& services);

  std::shared_ptr<AppDelegate> delegate_ = std::make_shared<AppDelegate>();
  std::unique_ptr<kit::Application> application_;
  std::shared_ptr<ViewController> controller_;
  Autoplayer autoplayer_;
  bool autoplay_ = false;
  kit::Log* previousToastLog_ = nullptr;  // the toasts write to the services' log meanwhile
};
