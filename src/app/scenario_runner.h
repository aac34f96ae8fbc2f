#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/game_ads.h"
#include "app/scenario_host.h"
#include "game/autoplayer.h"
#include "game/game_scene.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/value.h"

// A script line that cannot be run: unknown, malformed or out of place.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Plays a script of commands against the real game scene, one frame at a time
// at exactly 60 frames per second on the platform's manual clock (frame k runs
// at k × 10^9 / 60 ns, in integers, so nothing drifts). The game's headless
// mode, the scenario tests and the benchmark all go through it. The platform,
// the host and the output stream are borrowed and must outlive the runner.
//
// Commands, one per line of at most kMaxLineBytes (a UTF-8 byte-order mark
// may start the script; '#' starts a comment, blank lines are skipped), are
// listed in commands(): that one table drives the runner, its --help and the
// README's table. Dumps also tell "alert" (null, or its title, message,
// buttons and tag), "toasts" (the texts of the toasts on the game's view),
// "mails" (each composed mail: to, subject, body, html) and "language" (the
// first preferred language).
class ScenarioRunner {
 public:
  // What one launch of the game is made of.
  struct Launch {
    kit::HeadlessPlatform& platform;
    ScenarioHost& host;
    GameAds* ads = nullptr;
  };
  // Drops the ended launch and makes the next one (not yet started).
  using Relauncher = std::function<Launch()>;

  ScenarioRunner(kit::HeadlessPlatform& platform, ScenarioHost& host, std::ostream& out);

  // The words of one script line, the command first.
  using Words = std::vector<std::string_view>;
  // One script command: its usage (the name first), what it does, and the
  // member that runs it, given the line's words and the usage.
  struct Command {
    std::string_view usage;
    std::string_view meaning;
    void (ScenarioRunner::*run)(const Words& w, std::string_view usage);
    std::string_view name() const { return usage.substr(0, usage.find(' ')); }
  };
  // Every command, in the order the help and the README list them.
  static std::span<const Command> commands();

  // Runs every line of `script`. Returns 0, or 2 after writing
  // "<scriptName>:<line>: <reason>" to `err` for the first line that cannot
  // be run (nothing after it runs).
  int run(std::istream& script, const std::string& scriptName, std::ostream& err);
  // Runs one line; throws ScriptError when it cannot.
  void execute(std::string_view line);

  // The commands, for programs that drive the runner directly. Each throws
  // ScriptError where its command would be refused.
  void setSeed(unsigned seed);
  void setDevice(kit::Device::Idiom idiom, kit::Size viewSize);
  void start();
  // `command` names the script command that asked, for its error.
  void runFrames(int64_t count, std::string_view command = "frames");
  void tap(std::vector<kit::Point> touches);
  void tapButton(std::string_view name);
  void setAutoplay(bool on) { autoplay_ = on; }
  // The game's ads, borrowed: the ad commands act on them and dumps show
  // them as "ads". Without them those commands are refused.
  void attachAds(GameAds& ads) { ads_ = &ads; }
  // Who makes the next launch; without one relaunch is refused.
  void setRelauncher(Relauncher relauncher) { relauncher_ = std::move(relauncher); }
  void setNow(int64_t seconds);
  // Ends the started game as quitting does and starts the next launch with
  // the same seed and device; the log and the opened URLs carry over.
  void relaunch();
  void setMailAvailable(bool available);
  void tapAlert(int index);
  // The dump: the scene's state plus what the platform saw ("frame", "seed",
  // "notifications", "log" since the previous dump, "openedURLs").
  kit::Value dump();
  kit::Value pref(const std::string& key) const;

  // The platform of the current launch.
  kit::HeadlessPlatform& platform() const { return *platform_; }

  // Frames run so far.
  int64_t frame() const { return frame_; }
  // Null before start.
  std::shared_ptr<GameScene> scene() const { return host_->scene(); }

  // Longest single frames or wait request; longer ones are refused rather
  // than left to run for days.
  static constexpr int64_t kMaxFramesPerCommand = 1'000'000'000;
  // The longest script line; a longer one is refused, not read whole.
  static constexpr std::size_t kMaxLineBytes = 64 * 1024;
  // The largest view a device command sets up, each way, in points (as
  // --size allows): beyond it no window or physics world makes sense.
  static constexpr double kMaxViewSide = 10'000;
  // The latest time `now` takes: the last second of the year 9999.
  static constexpr int64_t kLatestTime = 253'402'300'799;

 private:
  // The commands' handlers, each checking its words before acting.
  void commandSeed(const Words& w, std::string_view usage);
  void commandDevice(const Words& w, std::string_view usage);
  void commandStart(const Words& w, std::string_view usage);
  void commandFrames(const Words& w, std::string_view usage);
  void commandWait(const Words& w, std::string_view usage);
  void commandTap(const Words& w, std::string_view usage);
  void commandTapButton(const Words& w, std::string_view usage);
  void commandAutoplay(const Words& w, std::string_view usage);
  void commandDump(const Words& w, std::string_view usage);
  void commandPref(const Words& w, std::string_view usage);
  void commandScreenshot(const Words& w, std::string_view usage);
  void commandAdnet(const Words& w, std::string_view usage);
  void commandCloseAd(const Words& w, std::string_view usage);
  void commandNow(const Words& w, std::string_view usage);
  void commandRelaunch(const Words& w, std::string_view usage);
  void commandMail(const Words& w, std::string_view usage);
  void commandTapAlert(const Words& w, std::string_view usage);

  GameScene& startedScene(std::string_view command) const;
  GameAds& attachedAds(std::string_view command) const;
  // The rating service's part of a dump: alert, toasts, mails, language.
  void describeRating(kit::Value::Dictionary& state) const;

  kit::HeadlessPlatform* platform_;
  ScenarioHost* host_;
  std::ostream& out_;
  Autoplayer autoplayer_;
  std::optional<unsigned> seed_;
  unsigned usedSeed_ = 0;
  kit::Size viewSize_{320, 568};
  bool autoplay_ = false;
  int64_t frame_ = 0;
  GameAds* ads_ = nullptr;
  Relauncher relauncher_;
  // What earlier launches saw that dumps still report.
  std::vector<std::string> carriedLog_;
  std::vector<std::string> carriedURLs_;
};
