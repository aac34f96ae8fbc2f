#include "app/scenario_runner.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "app/scene_dump.h"
#include "kit/foundation/json.h"
#include "kit/render/application.h"
#include "kit/render/sprite_view.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/window.h"
#include "names/notification_names.h"
#include "names/preference_keys.h"

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

// A word as an error message shows it: quoted, and cut short when long.
std::string quoted(std::string_view word) {
  constexpr std::size_t kShown = 40;
  if (word.size() > kShown)
    return "'" + std::string(word.substr(0, kShown)) + "...' (" + std::to_string(word.size()) +
           " bytes)";
  return "'" + std::string(word) + "'";
}

// Reads one line of at most `limit` bytes into `line` (without its end).
// False at the end of the script; throws ScriptError for a longer line or a
// script that cannot be read, consuming nothing more of it.
bool readLine(std::istream& in, std::string& line, std::size_t limit) {
  line.clear();
  for (;;) {
    const int c = in.get();
    if (c == std::char_traits<char>::eof()) {
      if (in.bad())
        throw ScriptError("cannot read the script");
      return !line.empty();
    }
    if (c == '\n')
      return true;
    if (line.size() == limit) {
      throw ScriptError("the line is longer than " + std::to_string(limit) + " bytes");
    }
    line.push_back(static_cast<char>(c));
  }
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

// What a player sees over a covered button: the alert by its title (or its
// message when it has none), any other view by the window's child that holds it.
std::string describeCover(std::shared_ptr<kit::View> view) {
  for (auto v = view; v; v = v->superview()) {
    if (auto alert = std::dynamic_pointer_cast<kit::AlertView>(v))
      return "the alert " +
             quoted(std::string_view(alert->title().empty() ? alert->message() : alert->title()));
    if (v->superview() && !v->superview()->superview())
      view = v;
  }
  return "a " + view->className();
}

void expectCount(const std::vector<std::string_view>& w, std::size_t count,
                 std::string_view usage) {
  if (w.size() != count)
    throw ScriptError("usage: " + std::string(usage));
}

}  // namespace

ScenarioRunner::ScenarioRunner(kit::HeadlessPlatform& platform, ScenarioHost& host,
                               std::ostream& out)
    : platform_(&platform), host_(&host), out_(out) {}

int ScenarioRunner::run(std::istream& script, const std::string& scriptName, std::ostream& err) {
  std::string line;
  int number = 0;
  try {
    // An unreadable script (a folder, say) fails at once, not as an empty one.
    if (script.peek() == std::char_traits<char>::eof() && script.bad())
      throw ScriptError("cannot read the script");
    for (;;) {
      ++number;
      if (!readLine(script, line, kMaxLineBytes))
        break;
      // Editors may start a UTF-8 file with a byte-order mark.
      if (number == 1 && line.starts_with("\xEF\xBB\xBF"))
        line.erase(0, 3);
      execute(line);
    }
  } catch (const ScriptError& error) {
    err << scriptName;
    if (number > 0)
      err << ":" << number;
    err << ": " << error.what() << '\n';
    return 2;
  }
  return 0;
}

std::span<const ScenarioRunner::Command> ScenarioRunner::commands() {
  static constexpr Command kCommands[] = {
      {"seed N", "before start: seed the random numbers (default: the time)",
       &ScenarioRunner::commandSeed},
      {"device phone|pad W H", "before start: idiom and view size (default: phone 320 568)",
       &ScenarioRunner::commandDevice},
      {"start", "launch the host: defaults registered, scene presented",
       &ScenarioRunner::commandStart},
      {"frames N", "advance N whole frames", &ScenarioRunner::commandFrames},
      {"wait SECONDS", "advance round(SECONDS x 60) whole frames", &ScenarioRunner::commandWait},
      {"tap X Y [X Y ...]",
       "one touch event with these touches, in scene points, through the window as a finger goes "
       "(an alert or an interstitial on top takes it)",
       &ScenarioRunner::commandTap},
      {"tapbutton play|helpplay|again",
       "a tap at the centre of that button; refused, saying what covers it, when a view does",
       &ScenarioRunner::commandTapButton},
      {"autoplay on|off", "the built-in player taps, frame by frame",
       &ScenarioRunner::commandAutoplay},
      {"dump", "the game's state as one line of JSON", &ScenarioRunner::commandDump},
      {"pref KEY", "one preference as JSON (null when absent)", &ScenarioRunner::commandPref},
      {"now SECONDS", "set the wall clock (seconds since 1970)", &ScenarioRunner::commandNow},
      {"relaunch", "quit and launch again on the same preferences",
       &ScenarioRunner::commandRelaunch},
      {"mail available|unavailable", "whether the desktop can send mail",
       &ScenarioRunner::commandMail},
      {"tapalert INDEX", "press the button INDEX of the alert on screen",
       &ScenarioRunner::commandTapAlert},
      {"adnet fill|fail|slow SECONDS", "how the house ad network answers the next requests",
       &ScenarioRunner::commandAdnet},
      {"closead", "close the interstitial on screen", &ScenarioRunner::commandCloseAd},
      {"screenshot FILE.png", "save what the window shows (with a window only)",
       &ScenarioRunner::commandScreenshot},
  };
  return kCommands;
}

void ScenarioRunner::execute(std::string_view line) {
  const auto w = words(line);
  if (w.empty())
    return;
  const std::string_view command = w[0];
  for (const Command& entry : commands()) {
    if (entry.name() == command) {
      (this->*entry.run)(w, entry.usage);
      return;
    }
  }
  throw ScriptError("unknown command " + quoted(command));
}

void ScenarioRunner::commandSeed(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  setSeed(static_cast<unsigned>(integer(w[1], 0, 4294967295LL, "the seed")));
}

void ScenarioRunner::commandDevice(const Words& w, std::string_view usage) {
  expectCount(w, 4, usage);
  if (w[1] != "phone" && w[1] != "pad") {
    throw ScriptError("the device is phone or pad, not " + quoted(w[1]));
  }
  const double width = real(w[2], "the width"), height = real(w[3], "the height");
  if (!(width >= 1 && height >= 1 && width <= kMaxViewSide && height <= kMaxViewSide)) {
    throw ScriptError("the view size must be from 1 to " +
                      std::to_string(static_cast<int>(kMaxViewSide)) + " points each way");
  }
  setDevice(w[1] == "pad" ? kit::Device::Idiom::Pad : kit::Device::Idiom::Phone, {width, height});
}

void ScenarioRunner::commandStart(const Words& w, std::string_view usage) {
  expectCount(w, 1, usage);
  start();
}

void ScenarioRunner::commandFrames(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  runFrames(integer(w[1], 0, kMaxFramesPerCommand, "the frame count"), "frames");
}

void ScenarioRunner::commandWait(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  const double seconds = real(w[1], "the wait");
  const double count = std::round(seconds * 60);
  if (count < 0 || count > static_cast<double>(kMaxFramesPerCommand)) {
    throw ScriptError("the wait must be from 0 to " + std::to_string(kMaxFramesPerCommand / 60) +
                      " seconds");
  }
  runFrames(static_cast<int64_t>(count), "wait");
}

void ScenarioRunner::commandTap(const Words& w, std::string_view usage) {
  if (w.size() < 3 || w.size() % 2 == 0)
    throw ScriptError("usage: " + std::string(usage));
  std::vector<kit::Point> touches;
  for (std::size_t i = 1; i < w.size(); i += 2) {
    touches.push_back({real(w[i], "x"), real(w[i + 1], "y")});
  }
  tap(std::move(touches));
}

void ScenarioRunner::commandTapButton(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  tapButton(w[1]);
}

void ScenarioRunner::commandAutoplay(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  if (w[1] != "on" && w[1] != "off")
    throw ScriptError("usage: " + std::string(usage));
  setAutoplay(w[1] == "on");
}

void ScenarioRunner::commandDump(const Words& w, std::string_view usage) {
  expectCount(w, 1, usage);
  out_ << kit::toJson(dump()) << std::endl;
}

void ScenarioRunner::commandPref(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  out_ << kit::toJson(pref(std::string(w[1]))) << std::endl;
}

void ScenarioRunner::commandScreenshot(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  startedScene("screenshot");
  if (const kit::Status saved = host_->screenshot(std::string(w[1])); !saved)
    throw ScriptError(saved.error());
}

void ScenarioRunner::commandAdnet(const Words& w, std::string_view usage) {
  if (w.size() < 2 || (w[1] == "slow") != (w.size() == 3) ||
      (w[1] != "fill" && w[1] != "fail" && w[1] != "slow"))
    throw ScriptError("usage: " + std::string(usage));
  const double seconds = w[1] == "slow" ? real(w[2], "the delay") : 0;
  if (seconds < 0)
    throw ScriptError("the delay must not be negative");
  attachedAds("adnet").network()->setAnswer(w[1] == "fill"   ? HouseAdNetwork::Answer::Fill
                                            : w[1] == "fail" ? HouseAdNetwork::Answer::Fail
                                                             : HouseAdNetwork::Answer::Slow,
                                            seconds);
}

void ScenarioRunner::commandCloseAd(const Words& w, std::string_view usage) {
  expectCount(w, 1, usage);
  if (!attachedAds("closead").closeInterstitial())
    throw ScriptError("no interstitial is on screen");
}

void ScenarioRunner::commandNow(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  setNow(integer(w[1], 0, kLatestTime, "the time"));
}

void ScenarioRunner::commandRelaunch(const Words& w, std::string_view usage) {
  expectCount(w, 1, usage);
  relaunch();
}

void ScenarioRunner::commandMail(const Words& w, std::string_view usage) {
  if (w.size() != 2 || (w[1] != "available" && w[1] != "unavailable"))
    throw ScriptError("usage: " + std::string(usage));
  setMailAvailable(w[1] == "available");
}

void ScenarioRunner::commandTapAlert(const Words& w, std::string_view usage) {
  expectCount(w, 2, usage);
  tapAlert(static_cast<int>(integer(w[1], 0, 1000, "the button index")));
}

void ScenarioRunner::setSeed(unsigned seed) {
  if (scene())
    throw ScriptError("seed must come before start");
  seed_ = seed;
}

void ScenarioRunner::setDevice(kit::Device::Idiom idiom, kit::Size viewSize) {
  if (scene())
    throw ScriptError("device must come before start");
  platform_->device.userInterfaceIdiom = idiom;
  platform_->device.screenWidth = viewSize.width;
  platform_->device.screenHeight = viewSize.height;
  viewSize_ = viewSize;
}

void ScenarioRunner::start() {
  if (scene())
    throw ScriptError("the game has already started");
  // The scene seeds with the clock's wall time when no seed is given; the
  // dump reports it either way so that any run can be replayed.
  usedSeed_ = seed_ ? *seed_ : static_cast<unsigned>(platform_->clock.now());
  host_->start(viewSize_, seed_);
}

void ScenarioRunner::setNow(int64_t seconds) {
  platform_->clock.setNow(seconds);
}

void ScenarioRunner::relaunch() {
  startedScene("relaunch");
  if (!relauncher_)
    throw ScriptError("relaunch needs a run that can launch the game again");
  host_->end();
  for (auto& line : platform_->log.take())
    carriedLog_.push_back(std::move(line));
  for (const auto& url : platform_->urlOpener.opened)
    carriedURLs_.push_back(url);
  const Launch next = relauncher_();
  platform_ = &next.platform;
  host_ = &next.host;
  ads_ = next.ads;
  usedSeed_ = seed_ ? *seed_ : static_cast<unsigned>(platform_->clock.now());
  host_->start(viewSize_, seed_);
}

void ScenarioRunner::setMailAvailable(bool available) {
  kit::RecordingMailSink* mail = attachedAds("mail").recordedMail();
  if (!mail)
    throw ScriptError("mail needs a run that records its mail");
  mail->available = available;
}

void ScenarioRunner::tapAlert(int index) {
  startedScene("tapalert");
  kit::Application* app = host_->application();
  auto window = app ? app->window() : nullptr;
  auto alert = window ? kit::AlertView::visibleAlert(*window) : nullptr;
  if (!alert)
    throw ScriptError("no alert is on screen");
  const std::optional<kit::Rect> button = alert->frameOfButtonAtIndex(index);
  if (!button) {
    throw ScriptError("the alert has buttons 0 to " + std::to_string(alert->numberOfButtons() - 1) +
                      ", not " + std::to_string(index));
  }
  // Through the application's touch routing, as a player's tap goes.
  app->touchesBegan({alert->convertPointToView({button->midX(), button->midY()}, nullptr)});
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

void ScenarioRunner::runFrames(int64_t count, std::string_view command) {
  GameScene& game = startedScene(command);
  kit::FrameDriver& driver = host_->frameDriver();
  for (int64_t i = 0; i < count; ++i) {
    const int64_t due = frame_ * kit::kNanosPerSecond / 60;
    platform_->clock.advance(due - platform_->clock.monotonicNanos());
    if (HouseAdNetwork* network = ads_ ? ads_->network() : nullptr)
      network->awaitDueAnswers();
    if (autoplay_) {
      auto touches = autoplayer_.touchesFor(game);
      if (!touches.empty())
        driver.touchesBegan(std::move(touches));
    }
    driver.runFrame();
    host_->frameDidRun();
    ++frame_;
  }
}

void ScenarioRunner::tap(std::vector<kit::Point> touches) {
  startedScene("tap");
  kit::Application* app = host_->application();
  if (!app) {
    host_->frameDriver().touchesBegan(std::move(touches));
    return;
  }
  // Through the application's touch routing, as a player's fingers go: an
  // alert or an interstitial over the scene takes the touch.
  std::vector<kit::Point> inWindow;
  for (const kit::Point p : touches) {
    if (const std::optional<kit::Point> w = app->windowPointOfScene(p))
      inWindow.push_back(*w);
  }
  app->touchesBegan(inWindow);
}

void ScenarioRunner::tapButton(std::string_view name) {
  GameScene& game = startedScene("tapbutton");
  const kit::SpriteNode* button = nullptr;
  if (name == "play") {
    button = &game.playBtn();
  } else if (name == "helpplay") {
    button = &game.helpPlayBtn();
  } else if (name == "again") {
    button = &game.againBtn();
  } else {
    throw ScriptError("the buttons are play, helpplay and again, not " + quoted(name));
  }
  const kit::Point centre = Autoplayer::centreInScene(*button);
  if (kit::Application* app = host_->application()) {
    if (auto cover = app->viewCoveringScene(centre)) {
      throw ScriptError("the " + std::string(name) + " button is covered by " +
                        describeCover(std::move(cover)));
    }
  }
  tap({centre});
}

kit::Value ScenarioRunner::dump() {
  kit::Value::Dictionary state = describeScene(startedScene("dump"));
  for (auto& [key, value] : host_->describeWindow())
    state[key] = value;
  state["frame"] = static_cast<long long>(frame_);
  state["seed"] = static_cast<long long>(usedSeed_);
  auto postCount = [this](const char* name) {
    return static_cast<long long>(platform_->notifications.postCount(name));
  };
  state["notifications"] =
      kit::Value::Dictionary{{notification::kShowAd, postCount(notification::kShowAd)},
                             {notification::kSoundChange, postCount(notification::kSoundChange)}};
  kit::Value::Array log;
  for (auto& line : carriedLog_)
    log.emplace_back(std::move(line));
  carriedLog_.clear();
  for (auto& line : platform_->log.take())
    log.emplace_back(std::move(line));
  state["log"] = std::move(log);
  kit::Value::Array urls;
  for (const auto& url : carriedURLs_)
    urls.emplace_back(url);
  for (const auto& url : platform_->urlOpener.opened)
    urls.emplace_back(url);
  state["openedURLs"] = std::move(urls);
  if (ads_ && ads_->network())
    state["ads"] = ads_->describe();
  describeRating(state);
  return state;
}

void ScenarioRunner::describeRating(kit::Value::Dictionary& state) const {
  const kit::Application* app = host_->application();
  state["alert"] = describeAlert(app);
  state["toasts"] = describeToasts(app);

  kit::Value::Array mails;
  if (kit::RecordingMailSink* sink = ads_ ? ads_->recordedMail() : nullptr) {
    for (const kit::MailMessage& mail : sink->mails) {
      kit::Value::Array to;
      for (const auto& address : mail.toRecipients)
        to.emplace_back(address);
      mails.emplace_back(kit::Value::Dictionary{{"to", std::move(to)},
                                                {"subject", mail.subject},
                                                {"body", mail.body},
                                                {"html", mail.isHTML}});
    }
  }
  state["mails"] = std::move(mails);

  const std::optional<kit::Value::Array> languages =
      platform_->defaults.arrayForKey(prefkey::kLanguages);
  state["language"] = languages && !languages->empty() ? languages->front() : kit::Value();
}

kit::Value ScenarioRunner::pref(const std::string& key) const {
  return platform_->defaults.objectForKey(key);
}
