#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/app_scenario_host.h"
#include "app/game_ads.h"
#include "kit/foundation/headless_platform.h"

// The launches of one script run, as successive processes of the game on one
// preferences folder would be: each launch has its own headless services (on
// a manual clock), ads and host. relaunch() ends the running launch as
// quitting does and brings up the next, whose clock goes on from where the
// last one stopped and whose device is the same; the mail the script composed
// is kept. Owns everything it lends out; main thread only.
class ScriptLaunches {
 public:
  struct Options {
    std::filesystem::path prefsDir;
    std::filesystem::path resourceDir;
    bool window = false;
    double windowScale = 0;               // 0 fits the desktop
    std::optional<std::string> language;  // the preferred language, else the desktop's
    int64_t startTime = 0;                // the first launch's wall clock, seconds since 1970
    bool progressDemo = false;            // each launch shows the progress demo from start
    kit::RendererChoice renderer = kit::RendererChoice::Auto;
    kit::WindowSystem* windows = nullptr;  // the backend's, for a window; borrowed
  };

  explicit ScriptLaunches(Options options);
  ~ScriptLaunches();
  ScriptLaunches(const ScriptLaunches&) = delete;
  ScriptLaunches& operator=(const ScriptLaunches&) = delete;

  // The current launch's parts; replaced by relaunch().
  kit::HeadlessPlatform& platform() { return *platform_; }
  AppScenarioHost& host() { return *host_; }
  GameAds& ads() { return ads_; }

  // Ends the current launch (its game, if started, quits first) and makes
  // the next one, not yet started.
  void relaunch();

 private:
  void bringUp();
  void tearDown();

  Options options_;
  GameAds ads_;  // outlives the launches: it keeps the script's mail
  std::unique_ptr<kit::HeadlessPlatform> platform_;
  std::unique_ptr<AppScenarioHost> host_;
};
