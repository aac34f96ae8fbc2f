#pragma once

#include <cstdint>
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
// Commands, one per line; '#' starts a comment, blank lines are skipped:
//   seed N                    before start: seed rand() with N (default: the time)
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
class ScenarioRunner {
 public:
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
  // The dump: the scene's state plus what the platform saw ("frame", "seed",
  // "notifications", "log" since the previous dump, "openedURLs").
  kit::Value dump();
  kit::Value pref(const std::string& key) const;

  // Frames run so far.
  int64_t frame() const { return frame_; }
  // Null before start.
  std::shared_ptr<GameScene> scene() const { return host_.scene(); }

  // Longest single frames or wait request; longer ones are refused rather
  // than left to run for days.
  static constexpr int64_t kMaxFramesPerCommand = 1'000'000'000;

 private:
  GameScene& startedScene(std::string_view command) const;
  GameAds& attachedAds(std::string_view command) const;

  kit::HeadlessPlatform& platform_;
  ScenarioHost& host_;
  std::ostream& out_;
  Autoplayer autoplayer_;
  std::optional<unsigned> seed_;
  unsigned usedSeed_ = 0;
  kit::Size viewSize_{320, 568};
  bool autoplay_ = false;
  int64_t frame_ = 0;
  GameAds* ads_ = nullptr;
};
