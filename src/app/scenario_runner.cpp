#include "app/scenario_runner.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "app/scene_dump.h"
#include "kit/foundation/json.h"

namespace {

std::vector<std::string_view> words(std::string_view line) {
  if (const auto hash = line.find('#'); hash != std::string_view::npos)
    line = line.substr(0, hash);
  std::vector<std::string_view> result;
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r'))
      ++i;
    const std::size_t begin = i;
    while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r')
      ++i;
    if (i > begin)
      result.push_back(line.substr(begin, i - begin));
  }
  return result;
}

std::string quoted(std::string_view word) {
  return "'" + std::string(word) + "'";
}

int64_t integer(std::string_view word, int64_t min, int64_t max, const char* what) {
  int64_t value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc() || end != word.data() + word.size() || value < min || value > max) {
    throw ScriptError(std::string(what) + " must be a whole number from " + std::to_string(min) +
                      " to " + std::to_string(max) + ", not " + quoted(word));
  }
  return value;
}

double real(std::string_view word, const char* what) {
  const std::string text(word);
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || end != text.c_str() + text.size() || !std::isfinite(value)) {
    throw ScriptError(std::string(what) + " must be a finite number, not " + quoted(word));
  }
  return value;
}

void expectCount(const std::vector<std::string_view>& w, std::size_t count, const char* usage) {
  if (w.size() != count)
    throw ScriptError(std::string("usage: ") + usage);
}

}  // namespace

ScenarioRunner::ScenarioRunner(kit::HeadlessPlatform& platform, ScenarioHost& host,
                               std::ostream& out)
    : platform_(platform), host_(host), out_(out) {}

int ScenarioRunner::run(std::istream& script, const std::string& scriptName, std::ostream& err) {
  std::string line;
  int number = 0;
  while (std::getline(script, line)) {
    ++number;
    try {
      execute(line);
    } catch (const ScriptError& error) {
      err << scriptName << ":" << number << ": " << error.what() << '\n';
      return 2;
    }
  }
  return 0;
}

void ScenarioRunner::execute(std::string_view line) {
  const auto w = words(line);
  if (w.empty())
    return;
  const std::string_view command = w[0];

  if (command == "seed") {
    expectCount(w, 2, "seed N");
    setSeed(static_cast<unsigned>(integer(w[1], 0, 4294967295LL, "the seed")));
  } else if (command == "device") {
    expectCount(w, 4, "device phone|pad W H");
    if (w[1] != "phone" && w[1] != "pad") {
      throw ScriptError("the device is phone or pad, not " + quoted(w[1]));
    }
    const double width = real(w[2], "the width"), height = real(w[3], "the height");
    if (width <= 0 || height <= 0)
      throw ScriptError("the view size must be positive");
    setDevice(w[1] == "pad" ? kit::Device::Idiom::Pad : kit::Device::Idiom::Phone, {width, height});
  } else if (command == "start") {
    expectCount(w, 1, "start");
    start();
  } else if (command == "frames") {
    expectCount(w, 2, "frames N");
    runFrames(integer(w[1], 0, kMaxFramesPerCommand, "the frame count"));
  } else if (command == "wait") {
    expectCount(w, 2, "wait SECONDS");
    const double seconds = real(w[1], "the wait");
    const double count = std::round(seconds * 60);
    if (count < 0 || count > static_cast<double>(kMaxFramesPerCommand)) {
      throw ScriptError("the wait must be from 0 to " + std::to_string(kMaxFramesPerCommand / 60) +
                        " seconds");
    }
    runFrames(static_cast<int64_t>(count));
  } else if (command == "tap") {
    if (w.size() < 3 || w.size() % 2 == 0)
      throw ScriptError("usage: tap X Y [X Y ...]");
    std::vector<kit::Point> touches;
    for (std::size_t i = 1; i < w.size(); i += 2) {
      touches.push_back({real(w[i], "x"), real(w[i + 1], "y")});
    }
    tap(std::move(touches));
  } else if (command == "tapbutton") {
    expectCount(w, 2, "tapbutton play|helpplay|again");
    tapButton(w[1]);
  } else if (command == "autoplay") {
    expectCount(w, 2, "autoplay on|off");
    if (w[1] != "on" && w[1] != "off")
      throw ScriptError("usage: autoplay on|off");
    setAutoplay(w[1] == "on");
  } else if (command == "dump") {
    expectCount(w, 1, "dump");
    out_ << kit::toJson(dump()) << std::endl;
  } else if (command == "screenshot") {
    expectCount(w, 2, "screenshot FILE.png");
    startedScene("screenshot");
    std::string error;
    if (!host_.screenshot(std::string(w[1]), &error))
      throw ScriptError(error);
  } else if (command == "adnet") {
    if (w.size() < 2 || (w[1] == "slow") != (w.size() == 3) ||
        (w[1] != "fill" && w[1] != "fail" && w[1] != "slow"))
      throw ScriptError("usage: adnet fill|fail|slow SECONDS");
    const double seconds = w[1] == "slow" ? real(w[2], "the delay") : 0;
    if (seconds < 0)
      throw ScriptError("the delay must not be negative");
    attachedAds("adnet").network()->setAnswer(w[1] == "fill"   ? HouseAdNetwork::Answer::Fill
                                              : w[1] == "fail" ? HouseAdNetwork::Answer::Fail
                                                               : HouseAdNetwork::Answer::Slow,
                                              seconds);
  } else if (command == "closead") {
    expectCount(w, 1, "closead");
    if (!attachedAds("closead").closeInterstitial())
      throw ScriptError("no interstitial is on screen");
  } else if (command == "pref") {
    expectCount(w, 2, "pref KEY");
    out_ << kit::toJson(pref(std::string(w[1]))) << std::endl;
  } else {
    throw ScriptError("unknown command " + quoted(command));
  }
}

void ScenarioRunner::setSeed(unsigned seed) {
  if (scene())
    throw ScriptError("seed must come before start");
  seed_ = seed;
}

void ScenarioRunner::setDevice(kit::Device::Idiom idiom, kit::Size viewSize) {
  if (scene())
    throw ScriptError("device must come before start");
  platform_.device.userInterfaceIdiom = idiom;
  platform_.device.screenWidth = viewSize.width;
  platform_.device.screenHeight = viewSize.height;
  viewSize_ = viewSize;
}

void ScenarioRunner::start() {
  if (scene())
    throw ScriptError("the game has already started");
  // The scene seeds with the clock's wall time when no seed is given; the
  // dump reports it either way so that any run can be replayed.
  usedSeed_ = seed_ ? *seed_ : static_cast<unsigned>(platform_.clock.now());
  host_.start(viewSize_, seed_);
}

GameAds& ScenarioRunner::attachedAds(std::string_view command) const {
  if (!ads_ || !ads_->network())
    throw ScriptError(std::string(command) + " needs the game's ads, which this run has not");
  return *ads_;
}

GameScene& ScenarioRunner::startedScene(std::string_view command) const {
  auto presented = scene();
  if (!presented)
    throw ScriptError(std::string(command) + " needs a started game (start first)");
  return *presented;
}

void ScenarioRunner::runFrames(int64_t count) {
  GameScene& game = startedScene("frames");
  kit::FrameDriver& driver = host_.frameDriver();
  for (int64_t i = 0; i < count; ++i) {
    const int64_t due = frame_ * kit::kNanosPerSecond / 60;
    platform_.clock.advance(due - platform_.clock.monotonicNanos());
    if (autoplay_) {
      auto touches = autoplayer_.touchesFor(game);
      if (!touches.empty())
        driver.touchesBegan(std::move(touches));
    }
    driver.runFrame();
    host_.frameDidRun();
    ++frame_;
  }
}

void ScenarioRunner::tap(std::vector<kit::Point> touches) {
  startedScene("tap");
  host_.frameDriver().touchesBegan(std::move(touches));
}

void ScenarioRunner::tapButton(std::string_view name) {
  GameScene& game = startedScene("tapbutton");
  std::shared_ptr<kit::SpriteNode> button;
  if (name == "play") {
    button = game.playBtn;
  } else if (name == "helpplay") {
    button = game.helpPlayBtn;
  } else if (name == "again") {
    button = game.againBtn;
  } else {
    throw ScriptError("the buttons are play, helpplay and again, not " + quoted(name));
  }
  tap({Autoplayer::centreInScene(*button)});
}

kit::Value ScenarioRunner::dump() {
  kit::Value::Dictionary state = describeScene(startedScene("dump"));
  for (auto& [key, value] : host_.describeWindow())
    state[key] = value;
  state["frame"] = static_cast<long long>(frame_);
  state["seed"] = static_cast<long long>(usedSeed_);
  state["notifications"] = kit::Value::Dictionary{
      {"showad", static_cast<long long>(platform_.notifications.postCount("showad"))},
      {"soundchange", static_cast<long long>(platform_.notifications.postCount("soundchange"))}};
  kit::Value::Array log;
  for (auto& line : platform_.log.take())
    log.emplace_back(std::move(line));
  state["log"] = std::move(log);
  kit::Value::Array urls;
  for (const auto& url : platform_.urlOpener.opened)
    urls.emplace_back(url);
  state["openedURLs"] = std::move(urls);
  if (ads_ && ads_->network())
    state["ads"] = ads_->describe();
  return state;
}

kit::Value ScenarioRunner::pref(const std::string& key) const {
  return platform_.defaults.objectForKey(key);
}
