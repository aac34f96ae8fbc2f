#include "app/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

#include "app/scenario_runner.h"
#include "app/script_launches.h"
#include "kit/backends/files/file_resource_store.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/preferred_languages.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/interface_layout.h"

namespace {

constexpr const char* kHeadlessHint = "twinlanes --headless --script FILE";
// Where the clock of a run seeded on the command line starts (seconds since
// 1970), so that everything it prints replays exactly.
constexpr int64_t kReplayEpoch = 1'700'000'000;

// "320x568" as a size; nothing when it is not two positive numbers that a
// screen could show.
std::optional<kit::Size> parseSize(const std::string& text) {
  double w = 0, h = 0;
  char x = 0, extra = 0;
  if (std::sscanf(text.c_str(), "%lf%c%lf%c", &w, &x, &h, &extra) != 3 || (x != 'x' && x != 'X'))
    return std::nullopt;
  if (!(w >= 1 && w <= ScenarioRunner::kMaxViewSide && h >= 1 && h <= ScenarioRunner::kMaxViewSide))
    return std::nullopt;
  return kit::Size{w, h};
}

// A finite number written out whole ("2", "1.5"), or nothing. A stream in
// the classic locale, as the browser build's library has no from_chars for
// floating point.
std::optional<double> parseNumber(const std::string& text) {
  if (text.empty() ||
      !(std::isdigit(static_cast<unsigned char>(text[0])) || text[0] == '-' || text[0] == '.'))
    return std::nullopt;
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  double value = 0;
  in >> value;
  if (in.fail() || in.peek() != std::char_traits<char>::eof() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

}  // namespace

std::filesystem::path findResources() {
  std::error_code ec;
  const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  std::vector<std::filesystem::path> candidates;
  if (!ec) {
    candidates.push_back(exe.parent_path() / "resources");
    candidates.push_back(exe.parent_path().parent_path() / "share" / "twinlanes");
  }
  candidates.emplace_back(TWINLANES_RESOURCES_DIR);
  for (const auto& dir : candidates) {
    if (std::filesystem::exists(dir / "layout" / "main.json", ec))
      return dir;
  }
  return TWINLANES_RESOURCES_DIR;
}

namespace {

// The device profile of that name, as the interface layout defines it; the
// layout is the one place that says what a phone or a pad is.
std::optional<kit::DeviceProfile> layoutProfile(const kit::Result<kit::InterfaceLayout>& layout,
                                                const std::string& name) {
  const kit::DeviceProfile* profile = layout ? layout->profile(name) : nullptr;
  if (!profile) {
    std::cerr << "twinlanes: no device profile " << name << " in the layout"
              << (layout ? "" : ": " + layout.error()) << '\n';
    return std::nullopt;
  }
  return *profile;
}

// "320x568": a size in points as --size takes it.
std::string formatSize(kit::Size size) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << size.width << 'x' << size.height;
  return text.str();
}

// "phone (320x568) or pad (768x1024)": the layout's profiles with their
// scene sizes, `first` leading.
std::string describeProfiles(std::vector<kit::DeviceProfile> profiles, const std::string& first) {
  std::stable_partition(profiles.begin(), profiles.end(),
                        [&first](const kit::DeviceProfile& p) { return p.name == first; });
  std::string text;
  for (size_t i = 0; i < profiles.size(); ++i) {
    if (i > 0)
      text += i + 1 == profiles.size() ? " or " : ", ";
    text += profiles[i].name + " (" + formatSize(profiles[i].scene) + ")";
  }
  return text;
}

// The keys and the scenario commands, listed from the runner's own table.
std::string helpFooter() {
  std::string footer =
      "Keys: Left/A and Right/D/L steer the left and right car, Space/Enter press play,\n"
      "F11 or Alt+Enter toggle fullscreen, Escape quits. Mouse, touch screen and game\n"
      "controller (d-pad or shoulders to steer, A to play) work too.\n"
      "\n"
      "Scenario commands, one per line (# starts a comment):\n";
  for (const ScenarioRunner::Command& command : ScenarioRunner::commands()) {
    std::string usage(command.usage);
    usage.resize(std::max<std::size_t>(usage.size() + 2, 32), ' ');
    footer += "  " + usage + std::string(command.meaning) + "\n";
  }
  footer +=
      "Example: echo -e 'start\\ntapbutton play\\nwait 3\\ndump' | twinlanes --headless --script "
      "-";
  return footer;
}

}  // namespace

bool sayPrefsInUse(const kit::UserDefaults& defaults) {
  if (!defaults.inUseElsewhere())
    return false;
  std::cerr << "twinlanes: another copy of Twin Lanes is running with the preferences in "
            << std::filesystem::path(defaults.store().location()).parent_path().string()
            << "; close it first (or give this one its own --prefs-dir)\n";
  return true;
}

void sayNoDisplay(const std::string& why) {
  std::cerr << "twinlanes: no display to open a window on (" << why
            << "); to play without a window: " << kHeadlessHint << '\n';
}

namespace {

// The preferences folder of a script run: the given one, or a fresh one that
// goes away with the run.
std::optional<std::filesystem::path> scriptPrefs(const Flags& flags,
                                                 std::optional<kit::TempDir>& scratch) {
  if (flags.prefsDir.empty()) {
    try {
      scratch.emplace("twinlanes-prefs");
    } catch (const std::system_error& error) {
      std::cerr << "twinlanes: cannot create a temporary preferences folder: " << error.what()
                << '\n';
      return std::nullopt;
    }
    return scratch->path();
  }
  std::error_code ignored;
  std::filesystem::create_directories(flags.prefsDir, ignored);
  return std::filesystem::path(flags.prefsDir);
}

// A script against the whole host: in a window (each frame shown, screenshots
// possible) or, with --headless, without one.
// The device profiles come from `layout`, as read for --device's help.
int runScript(const Flags& flags, const ProgramBackend& backend,
              const kit::Result<kit::InterfaceLayout>& layout) {
  std::ifstream file;
  std::istream* script = &std::cin;
  const std::string scriptName = flags.script == "-" ? "<stdin>" : flags.script;
  if (flags.script != "-") {
    file.open(flags.script);
    if (!file) {
      std::cerr << "twinlanes: cannot read the script " << flags.script << '\n';
      return 2;
    }
    script = &file;
  }
  if (!flags.headless) {
    if (!backend.windows) {
      std::cerr << "twinlanes: this program plays scripts without a window only: " << kHeadlessHint
                << '\n';
      return 1;
    }
    std::string why;
    if (backend.displayAvailable && !backend.displayAvailable(&why)) {
      sayNoDisplay(why);
      return 1;
    }
  }
  std::optional<kit::TempDir> scratch;
  const std::optional<std::filesystem::path> prefs = scriptPrefs(flags, scratch);
  if (!prefs)
    return 2;

  // Unseeded runs draw from the real time, as the game does; the dump tells
  // the seed so that any run can be replayed. A run seeded here also starts
  // its clock at a fixed time: its ads' time stamps replay too.
  ScriptLaunches launches({*prefs, findResources(), !flags.headless, flags.scale, flags.language,
                           flags.seed ? kReplayEpoch : static_cast<int64_t>(std::time(nullptr)),
                           flags.progressDemo, flags.renderer,
                           flags.headless ? nullptr : backend.windows});
  if (sayPrefsInUse(launches.platform().defaults))
    return 1;
  ScenarioRunner runner(launches.platform(), launches.host(), std::cout);
  runner.attachAds(launches.ads());
  runner.setRelauncher([&launches] {
    launches.relaunch();
    return ScenarioRunner::Launch{launches.platform(), launches.host(), &launches.ads()};
  });
  if (flags.seed)
    runner.setSeed(*flags.seed);
  if (flags.device != "phone" || flags.size) {
    const std::optional<kit::DeviceProfile> profile = layoutProfile(layout, flags.device);
    if (!profile)
      return 1;
    runner.setDevice(profile->idiom, flags.size.value_or(profile->scene));
  }
  return runner.run(*script, scriptName, std::cerr);
}

}  // namespace

int twinlanesMain(int argc, char** argv, const ProgramBackend& backend) {
  CLI::App app{"Twin Lanes: steer two cars at once on four lanes.", "twinlanes"};
  Flags flags;
  app.set_version_flag("--version", "twinlanes " TWINLANES_VERSION);
  // The profiles the layout defines, which is what --device can play.
  const auto layout =
      kit::InterfaceLayout::load(kit::FileResourceStore(findResources()), "layout/main.json");
  const std::vector<kit::DeviceProfile> profiles =
      layout ? layout->profiles() : std::vector<kit::DeviceProfile>{};
  std::vector<std::string> profileNames;
  for (const kit::DeviceProfile& profile : profiles)
    profileNames.push_back(profile.name);
  CLI::Option* device = app.add_option(
      "--device", flags.device, "Device profile: " + describeProfiles(profiles, flags.device));
  if (!profileNames.empty())
    device->check(CLI::IsMember(profileNames));
  app.add_option_function<std::string>(
         "--size", [&](const std::string& text) { flags.size = parseSize(text); },
         "Scene size in points, WxH, instead of the profile's")
      ->check(CLI::Validator(
          [](std::string& text) {
            return parseSize(text) ? std::string() : "expected WxH, e.g. 320x568, not " + text;
          },
          "WxH"));
  app.add_flag("--fullscreen", flags.fullscreen, "Start in fullscreen (F11 or Alt+Enter toggles)");
  app.add_option("--scale", flags.scale,
                 "Window pixels per point (default: the largest that fits the desktop)")
      ->check(CLI::Validator(
          [](std::string& text) {
            const std::optional<double> scale = parseNumber(text);
            return scale && *scale >= 0.25 && *scale <= 8 ? std::string()
                                                          : "expected from 0.25 to 8, not " + text;
          },
          "0.25..8"));
  app.add_option("--renderer", flags.renderer,
                 "auto (accelerated with vsync on a display, software offscreen), accelerated "
                 "or software")
      ->transform(CLI::CheckedTransformer(std::map<std::string, kit::RendererChoice>{
          {"auto", kit::RendererChoice::Auto},
          {"accelerated", kit::RendererChoice::Accelerated},
          {"software", kit::RendererChoice::Software}}));
  app.add_option("--prefs-dir", flags.prefsDir,
                 "Folder for the preferences file (default: the per-user data folder; a fresh "
                 "temporary folder for scripts)")
      ->check(CLI::Validator(
          [](std::string& text) {
            return text.empty() ? "expected a folder, not an empty name" : std::string();
          },
          "DIR"));
  app.add_option_function<unsigned>(
      "--seed", [&](const unsigned& seed) { flags.seed = seed; },
      "Seed for the game's random numbers (default: the time); a seeded script "
      "run's clock also starts at a fixed time");
  app.add_option("--script", flags.script,
                 "Play a scenario script (a file, or - for standard input) in a window, or "
                 "without one with --headless");
  app.add_flag("--headless", flags.headless, "No window at all (needs --script)");
  app.add_option_function<uint64_t>(
         "--frames", [&](const uint64_t& n) { flags.frames = n; },
         "Run this many frames of the window, then exit")
      ->check(CLI::Validator(
          [](std::string& text) {
            uint64_t n = 0;
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), n);
            const bool ok = error == std::errc() && end == text.data() + text.size() && n >= 1 &&
                            n <= ScenarioRunner::kMaxFramesPerCommand;
            return ok ? std::string()
                      : "expected a whole number from 1 to " +
                            std::to_string(ScenarioRunner::kMaxFramesPerCommand) + ", not " + text;
          },
          "N"));
  app.add_option("--screenshot", flags.screenshot, "Save the window as this PNG on exit");
  app.add_flag("--autoplay", flags.autoplay, "Let the built-in player play (a demo)");
  app.add_flag("--progress-demo", flags.progressDemo,
               "Show the progress overlay counting to 100 % over the game (a demo; with a "
               "script, from its start on the script's clock)");
  app.add_option_function<std::string>(
         "--lang", [&](const std::string& code) { flags.language = code; },
         "Preferred language, e.g. en or zh-Hans (default: the desktop's)")
      ->check(CLI::Validator(
          [](std::string& code) {
            return kit::languageCodeOf(code) ? std::string()
                                             : "expected a language code such as en or zh-Hans, "
                                               "not " +
                                                   code;
          },
          "CODE"));
  app.footer(helpFooter());
  CLI11_PARSE(app, argc, argv);

  if (!flags.script.empty()) {
    if (flags.frames || !flags.screenshot.empty() || flags.autoplay) {
      std::cerr << "twinlanes: --frames, --screenshot and --autoplay are for the game itself; a "
                   "script uses its frames, screenshot and autoplay commands\n";
      return 2;
    }
    return runScript(flags, backend, layout);
  }
  if (flags.headless) {
    std::cerr << "twinlanes: --headless needs --script FILE (or --script - for standard input)\n";
    return 2;
  }
  if (!backend.runGame) {
    std::cerr << "twinlanes: this program plays scripts only: " << kHeadlessHint << '\n';
    return 2;
  }
  return backend.runGame(flags);
}
