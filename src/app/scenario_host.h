#pragma once

#include <memory>
#include <optional>
#include <string>

#include "game/game_scene.h"
#include "kit/foundation/geometry.h"
#include "kit/foundation/services.h"
#include "kit/foundation/value.h"
#include "kit/scene/frame_driver.h"

namespace kit {
class Application;
}

// The seam between the scenario runner and whoever hosts the game. The runner
// owns the services (a manual clock among them) and drives the frames; the
// host brings the game up the way the host view controller does when its view
// has loaded, and may show each frame. HeadlessHost is the bare one (the scene
// alone); AppScenarioHost runs the whole host, with or without a window.
class ScenarioHost {
 public:
  virtual ~ScenarioHost() = default;

  // Registers the default preferences ("best" 0, "first" YES, "sound" YES,
  // "cnt" 0), writes "first" YES and "cnt" 0 and synchronises, then creates
  // the game scene with `viewSize` (its random source seeded with `seed` when given, else
  // with the time) and presents it. Called once.
  virtual void start(kit::Size viewSize, std::optional<unsigned> seed) = 0;
  // The presented scene; null before start.
  virtual std::shared_ptr<GameScene> scene() const = 0;
  // Runs the presented scene's frames; touches are queued on it.
  virtual kit::FrameDriver& frameDriver() = 0;
  // After each frame the runner has run (a windowed host draws it here).
  virtual void frameDidRun() {}
  // Saves what the host shows now as a PNG. False with the reason when it
  // cannot; a host without a window never can.
  virtual bool screenshot(const std::string& file, std::string* error) {
    (void)file;
    if (error)
      *error = "screenshots need a window (run without --headless)";
    return false;
  }
  // What the host adds to a dump (a window host: "window" and "views");
  // nothing by default.
  virtual kit::Value::Dictionary describeWindow() const { return {}; }
  // The application around the game (its window, its touch routing), when
  // the host runs one; null before start and for the bare host.
  virtual kit::Application* application() const { return nullptr; }
  // Ends the game as quitting does (the delegate is told, the preferences
  // are written) and lets go of it; the host can then be dropped.
  virtual void end() {}
};

// Hosts the game with nothing on screen: the scene and its frame driver, on
// borrowed services that must outlive it.
class HeadlessHost final : public ScenarioHost {
 public:
  explicit HeadlessHost(const kit::Services& services);

  void start(kit::Size viewSize, std::optional<unsigned> seed) override;
  std::shared_ptr<GameScene> scene() const override { return scene_; }
  kit::FrameDriver& frameDriver() override { return driver_; }

 private:
  kit::Services services_;
  kit::FrameDriver driver_;
  std::shared_ptr<GameScene> scene_;
};
