#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/game_ads.h"
#include "app/scenario_host.h"
#include "game/autoplayer.h"
#include "game/game_scene.h"
#include "kit/backends/desktop/headless_platform.h"
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
// Commands, one per line; '#' starts a comment, blank lines are skipped:
//   seed N                    before start: seed the random source with N (default: the time)
//   device phone|pad W H      before start: idiom and view size (default phone 320 568)
//   start                     bring the game up as the host view controller does
//   frames N                  run N frames
//   wait SECONDS              run round(SECONDS × 60) frames
//   tap X Y [X Y ...]         one touch-began event with these touches (scene
//                             points), delivered at the next frame
//   tapbutton play|helpplay|again   a tap at the centre of that button
//   autoplay on|off           let the built-in player tap, frame by frame
//   dump                      print the state as one line of JSON (with a window:
//                             "window" and the "views" above the scene too)
//   pref KEY                  print that preference as JSON (null when absent)
//   screenshot FILE.png       save what the window shows now (needs a window)
//   adnet fill|fail|slow SECONDS   how the house ad network answers the next
//                             ad requests (with ads attached)
//   closead                   close the interstitial on screen (with ads attached)
//   now SECONDS               set the wall clock (seconds since 1970); it goes on
//                             with the frames
//   relaunch                  quit the game (preferences written) and launch it
//                             again on the same preferences, as a new process
//                             would (with a relauncher)
//   mail available|unavailable   whether the desktop can send mail (with ads
//                             attached: the rating service's mail goes there)
//   tapalert INDEX            tap the button INDEX of the alert on screen
// Dumps also tell "alert" (null, or its title, message, buttons and tag),
// "toasts" (the texts of the toasts on the game's view), "mails" (each
// composed mail: to, subject, body, html) and "language" (the first
// preferred language).
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
  void runFrames(int64_t count);
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
  // The latest time `now` takes: the last second of the year 9999.
  static constexpr int64_t kLatestTime = 253'402'300'799;

 private:
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
