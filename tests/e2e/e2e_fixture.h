#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "kit/foundation/temp_dir.h"
#include "kit/ui/image.h"

namespace e2e {

struct Rgb {
  int r = 0, g = 0, b = 0;
  int brightness() const { return std::max({r, g, b}); }
};

struct Outcome {
  int exitCode = -1;
  std::string out;
  std::string err;
  std::vector<nlohmann::json> dumps;  // each JSON object line of the output
};

// Runs the twinlanes binary as a player's desktop would (SDL's offscreen
// driver, one pixel per point) in a scratch folder, and reads back what it
// left: its output, screenshots and the preferences file. With
// TWINLANES_E2E_KEEP set the folder stays, to look at the screenshots.
class EndToEndTest : public ::testing::Test {
 protected:
  EndToEndTest() {
    if (std::getenv("TWINLANES_E2E_KEEP")) {
      dir.keep();
      std::cerr << "keeping " << dir.path().string() << '\n';
    }
  }

  // Runs `args` (with the script, when given, as a file); `display` false
  // leaves the process without any video driver.
  Outcome run(std::vector<std::string> args, const std::string& script = "", bool display = true) {
    if (!script.empty()) {
      const auto file = dir.path() / "script.txt";
      std::ofstream(file) << script;
      args.insert(args.begin(), {"--script", file.string()});
    }
    const auto outFile = dir.path() / "out.txt", errFile = dir.path() / "err.txt";
    std::string command = std::string("env -u DISPLAY -u WAYLAND_DISPLAY ") +
                          (display ? "SDL_VIDEODRIVER=offscreen SDL_FRAMEBUFFER_ACCELERATION=0 "
                                   : "-u SDL_VIDEODRIVER ") +
                          "XDG_DATA_HOME='" + (dir.path() / "data").string() +
                          "' timeout -s KILL 180 '" + TWINLANES_BINARY + "'";
    for (const auto& a : args)
      command += " '" + a + "'";  // no argument here holds a quote
    const int status = std::system(
        (command + " >'" + outFile.string() + "' 2>'" + errFile.string() + "'").c_str());
    Outcome result{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                   read(outFile),
                   read(errFile),
                   {}};
    EXPECT_TRUE(result.exitCode != 124 && result.exitCode != 128 + SIGKILL) << "timed out";
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
      auto j = nlohmann::json::parse(line, nullptr, false);
      if (!line.empty() && line[0] == '{' && !j.is_discarded())
        result.dumps.push_back(std::move(j));
    }
    return result;
  }

  static std::string read(const std::filesystem::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  kit::Image screenshot(const std::string& name) {
    std::string error;
    auto image = kit::Image::loadPng((dir.path() / name).string(), 1, &error);
    EXPECT_TRUE(image) << name << ": " << error;
    return image ? *image : kit::Image::blank({1, 1}, 1);
  }
  std::string shot(const std::string& name) const { return (dir.path() / name).string(); }
  std::string prefs() const { return (dir.path() / "prefs").string(); }
  nlohmann::json prefsFile() const {
    auto j = nlohmann::json::parse(read(dir.path() / "prefs" / "prefs.json"), nullptr, false);
    EXPECT_FALSE(j.is_discarded());
    return j;
  }

  static Rgb at(const kit::Image& image, double x, double y) {
    const auto p = image.pixelAt(static_cast<int>(x), static_cast<int>(y));
    return {p.red, p.green, p.blue};
  }
  // Pixels in [x0, x1) × [y0, y1) that satisfy `test`.
  template <class Test>
  static int count(const kit::Image& image, double x0, double y0, double x1, double y1, Test test) {
    int n = 0;
    for (int y = static_cast<int>(y0); y < static_cast<int>(y1); ++y)
      for (int x = static_cast<int>(x0); x < static_cast<int>(x1); ++x)
        if (test(at(image, x, y)))
          ++n;
    return n;
  }

  kit::TempDir dir{"twinlanes-e2e"};
};

}  // namespace e2e
