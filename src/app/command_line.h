#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "kit/foundation/geometry.h"
#include "kit/platform/renderer_choice.h"

namespace kit {
class UserDefaults;
class WindowSystem;
}  // namespace kit

// The command line's flags, as parsed.
struct Flags {
  bool headless = false;
  std::string script;
  std::string prefsDir;
  std::optional<unsigned> seed;
  std::string device = "phone";
  std::optional<kit::Size> size;
  bool fullscreen = false;
  double scale = 0;
  std::optional<uint64_t> frames;
  std::string screenshot;
  bool autoplay = false;
  bool progressDemo = false;
  std::optional<std::string> language;
  kit::RendererChoice renderer = kit::RendererChoice::Auto;
};

// What the program's backend adds to the command: the game in a window and
// windows for scripts. A program without them (the scenario runner under
// node) plays scripts headless only. Borrowed for the call.
struct ProgramBackend {
  std::function<int(const Flags&)> runGame;                // null: scripts only
  kit::WindowSystem* windows = nullptr;                    // null: no script in a window
  std::function<bool(std::string* why)> displayAvailable;  // null: always
};

// The twinlanes command: parses the flags and plays the game in a window, or
// plays a scenario script in a window or headless. Returns the process's exit
// status: 0 on success, 1 when there is no display (or the game cannot
// start), 2 for a script that cannot be run, CLI11's own codes for bad flags.
int twinlanesMain(int argc, char** argv, const ProgramBackend& backend);

// The resources folder: next to the binary (a build tree or an unpacked
// archive), in the installed share folder, or in the source tree.
std::filesystem::path findResources();
// Two copies of the game on one preferences folder would each save over the
// other's best score and counts, so the second one does not start: true
// (after saying so) when another copy holds these preferences.
bool sayPrefsInUse(const kit::UserDefaults& defaults);
// Says that no window can open, and how to play without one.
void sayNoDisplay(const std::string& why);
