#include "app/command_line.h"

#include <CLI/CLI.hpp>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>

#include "app/scenario_host.h"
#include "app/scenario_runner.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"

namespace {

struct Flags {
  bool headless = false;
  std::string script;
  std::string prefsDir;
  std::optional<unsigned> seed;
  std::string device = "phone";
};

int runHeadless(const Flags& flags) {
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

  // Preferences live in the given folder, or in a fresh one that goes away
  // with the run.
  std::optional<kit::TempDir> scratch;
  std::filesystem::path prefs;
  if (flags.prefsDir.empty()) {
    try {
      scratch.emplace("twinlanes-prefs");
    } catch (const std::system_error& error) {
      std::cerr << "twinlanes: cannot create a temporary preferences folder: " << error.what()
                << '\n';
      return 2;
    }
    prefs = scratch->path();
  } else {
    prefs = flags.prefsDir;
    std::error_code ignored;
    std::filesystem::create_directories(prefs, ignored);
  }

  kit::HeadlessPlatform platform(prefs, TWINLANES_RESOURCES_DIR);
  // Unseeded runs draw from the real time, as the game does; the dump tells
  // the seed so that any run can be replayed.
  platform.clock.setNow(static_cast<int64_t>(std::time(nullptr)));
  HeadlessHost host(platform.services());
  ScenarioRunner runner(platform, host, std::cout);
  if (flags.seed)
    runner.setSeed(*flags.seed);
  if (flags.device == "pad")
    runner.setDevice(kit::Device::Idiom::Pad, {768, 1024});
  return runner.run(*script, scriptName, std::cerr);
}

}  // namespace

int twinlanesMain(int argc, char** argv) {
  CLI::App app{"Twin Lanes: steer two cars at once on four lanes.", "twinlanes"};
  Flags flags;
  app.set_version_flag("--version", "twinlanes " TWINLANES_VERSION);
  app.add_flag("--headless", flags.headless,
               "Run without a window, driven by a script (see --script)");
  app.add_option("--script", flags.script,
                 "Scenario script to run headless, or - for standard input");
  app.add_option("--prefs-dir", flags.prefsDir,
                 "Folder for the preferences file (default: a fresh temporary folder)");
  app.add_option_function<unsigned>(
      "--seed", [&](const unsigned& seed) { flags.seed = seed; },
      "Seed for the game's random numbers (default: the time)");
  app.add_option("--device", flags.device, "Device profile: phone (320x568) or pad (768x1024)")
      ->check(CLI::IsMember({"phone", "pad"}));
  app.footer(
      "Scenario commands, one per line (# starts a comment):\n"
      "  seed N | device phone|pad W H | start | frames N | wait SECONDS\n"
      "  tap X Y [X Y ...] | tapbutton play|helpplay|again | autoplay on|off\n"
      "  dump | pref KEY\n"
      "Example: echo -e 'start\\ntapbutton play\\nwait 3\\ndump' | twinlanes --headless --script "
      "-");
  CLI11_PARSE(app, argc, argv);

  if (!flags.headless) {
    std::cout << "Twin Lanes: the windowed game is on its way. Until then, play it headless:\n"
                 "  twinlanes --headless --script FILE   (or --script - to read standard input)\n"
                 "See twinlanes --help for the script commands.\n";
    return 1;
  }
  if (flags.script.empty()) {
    std::cerr << "twinlanes: --headless needs --script FILE (or --script - for standard input)\n";
    return 2;
  }
  return runHeadless(flags);
}
