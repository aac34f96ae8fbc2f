#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/game_application.h"
#include "app/host_services.h"
#include "app/scenario_host.h"
#include "kit/foundation/value.h"
#include "ui/progress_demo.h"

// Hosts the game for the scenario runner the way the game runs for a
// player: AppDelegate, the interface layout's window and ViewController (so
// viewDidLoad, the notifications and the game-over count are the real ones), with a window
// that shows every frame, or with no window at all. The services and the host
// services are borrowed and must outlive it.
class AppScenarioHost final : public ScenarioHost {
 public:
  struct Options {
    std::filesystem::path resourceDir;
    bool window = true;
    double windowScale = 0;     // 0 fits the desktop
    bool progressDemo = false;  // the progress overlay counts over the game from start
    kit::RendererChoice renderer = kit::RendererChoice::Auto;
    kit::WindowSystem* windows = nullptr;  // the backend's, for a window; borrowed
  };

  AppScenarioHost(Options options, const kit::Services& services, HostServices& host);

  // Launches the application for the device the services describe (its
  // idiom picks the layout's profile) with a scene of `viewSize`. Throws
  // ScriptError with the reason when it cannot (no display, no layout).
  void start(kit::Size viewSize, std::optional<unsigned> seed) override;
  std::shared_ptr<GameScene> scene() const override;
  kit::FrameDriver& frameDriver() override;
  // Reads the window's events, runs the view animations and draws.
  void frameDidRun() override;

  // Saves what the window shows now; false with a reason when there is no
  // window (headless) or the file cannot be written.
  kit::Status screenshot(const std::string& file) override;
  // "window": its size in points and its scale (pixels per point); "views":
  // the visible views drawn above the sprite view, each with its class,
  // frame (window points) and alpha. Nothing before start.
  kit::Value::Dictionary describeWindow() const override;
  kit::Application* application() const override;
  void end() override;

  GameApplication* game() const { return game_.get(); }

 private:
  Options options_;
  kit::Services services_;
  HostServices& host_;
  std::unique_ptr<GameApplication> game_;
  std::unique_ptr<ProgressDemo> progressDemo_;  // goes before the game it covers
  std::unique_ptr<kit::FrameDriver> idle_;      // answers frameDriver() before start
};
