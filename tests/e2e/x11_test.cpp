// The game on a real X server (Xvfb), as a player's desktop runs it.

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "e2e_fixture.h"

namespace e2e {
namespace {

class X11Test : public EndToEndTest {
 protected:
  // Runs the game under xvfb-run with SDL left to pick its own driver.
  int runOnXvfb(std::vector<std::string> args) {
    const pid_t pid = fork();
    if (pid == 0) {
      freopen((dir.path() / "err.txt").c_str(), "w", stderr);
      freopen((dir.path() / "out.txt").c_str(), "w", stdout);
      unsetenv("SDL_VIDEODRIVER");
      setenv("XDG_DATA_HOME", (dir.path() / "data").c_str(), 1);
      // Each test process starts its search for a free display at its own
      // number: two searches from one start race for the same server.
      const std::string first = std::to_string(100 + getpid() % 5000);
      std::vector<std::string> all{
          "xvfb-run", "-a", "-n", first, "-s", "-screen 0 1280x1024x24", TWINLANES_BINARY};
      all.insert(all.end(), args.begin(), args.end());
      std::vector<char*> argv;
      for (auto& a : all)
        argv.push_back(a.data());
      argv.push_back(nullptr);
      execvp(argv[0], argv.data());
      _exit(127);
    }
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (waitpid(pid, &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > deadline) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return -1;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  // Plays the same seeded script on Xvfb with `renderer`, and gives its
  // last dump; its log stays in err.txt.
  nlohmann::json playOnXvfb(const std::string& renderer, const std::string& png) {
    const auto script = dir.path() / "script.txt";
    std::ofstream(script) << "start\ntapbutton play\nframes 120\ndump\nscreenshot " + shot(png) +
                                 "\n";
    const int status = runOnXvfb(
        {"--renderer", renderer, "--seed", "3", "--scale", "1", "--script", script.string()});
    EXPECT_EQ(status, 0) << read(dir.path() / "err.txt");
    return lastDump(read(dir.path() / "out.txt"));
  }

  static nlohmann::json lastDump(const std::string& text) {
    nlohmann::json last;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      auto j = nlohmann::json::parse(line, nullptr, false);
      if (!j.is_discarded() && j.is_object())
        last = std::move(j);
    }
    return last;
  }
};

// The display probe started SDL's video and quit it again; SDL 2.26 then
// could not start its X11 driver a second time and the game refused to open
// on every real desktop.
TEST_F(X11Test, TheVideoDriverStaysStartedAfterTheDisplayProbeBecauseX11CannotRestart) {
  if (system("command -v xvfb-run >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "xvfb-run is not installed";
  const int status = runOnXvfb(
      {"--scale", "1", "--frames", "10", "--screenshot", shot("x11.png"), "--prefs-dir", prefs()});
  ASSERT_EQ(status, 0) << read(dir.path() / "err.txt");
  const kit::Image image = screenshot("x11.png");
  EXPECT_EQ(image.pixelWidth(), 320);
  EXPECT_EQ(image.pixelHeight(), 568 + 50);
  EXPECT_GT(at(image, 160, 284).brightness(), 230);  // the play button
}

// The software renderer was forced everywhere: no vsync, and about 18 ms a
// frame fullscreen at 3840 x 2160. A real display now gets SDL's accelerated
// renderer (Mesa's software OpenGL under Xvfb), drawing what the software
// renderer draws up to the edges of scaled and turned pictures.
TEST_F(X11Test, ARealDisplayDrawsWithTheAcceleratedRendererAndTheSamePictures) {
  if (system("command -v xvfb-run >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "xvfb-run is not installed";
  const nlohmann::json accelerated = playOnXvfb("auto", "auto.png");
  const nlohmann::json software = playOnXvfb("software", "software.png");
  ASSERT_TRUE(accelerated.contains("window")) << accelerated.dump();
  EXPECT_EQ(accelerated["window"]["renderer"], "opengl") << accelerated.dump();
  EXPECT_TRUE(accelerated["window"]["vsync"].is_boolean());
  EXPECT_EQ(software["window"]["renderer"], "software") << software.dump();
  // The game says once what draws it.
  ASSERT_EQ(runOnXvfb({"--scale", "1", "--frames", "5", "--prefs-dir", prefs()}), 0);
  const std::string log = read(dir.path() / "err.txt");
  const size_t said = log.find("Drawing with SDL's opengl renderer, vsync o");
  EXPECT_NE(said, std::string::npos) << log;
  EXPECT_EQ(log.find("Drawing with", said + 1), std::string::npos) << log;

  const kit::Image a = screenshot("auto.png"), b = screenshot("software.png");
  ASSERT_EQ(a.pixelWidth(), b.pixelWidth());
  ASSERT_EQ(a.pixelHeight(), b.pixelHeight());
  int differing = 0;
  int64_t total = 0;
  for (int y = 0; y < a.pixelHeight(); ++y) {
    for (int x = 0; x < a.pixelWidth(); ++x) {
      const Rgb p = at(a, x, y), q = at(b, x, y);
      const int d = std::max({std::abs(p.r - q.r), std::abs(p.g - q.g), std::abs(p.b - q.b)});
      total += d;
      if (d > 64)
        ++differing;
    }
  }
  const double pixels = double(a.pixelWidth()) * a.pixelHeight();
  EXPECT_LT(differing / pixels, 0.01) << differing << " pixels differ";
  EXPECT_LT(total / pixels, 2.0);
}

// Tests and screenshots on the invisible drivers keep the software renderer,
// whatever the machine has.
TEST_F(X11Test, OffscreenRunsKeepTheSoftwareRenderer) {
  const Outcome r = run({"--seed", "3", "--prefs-dir", prefs()}, "start\nframes 2\ndump\n");
  ASSERT_EQ(r.exitCode, 0) << r.err;
  ASSERT_FALSE(r.dumps.empty()) << r.out;
  EXPECT_EQ(r.dumps.back()["window"]["renderer"], "software");
  EXPECT_TRUE(r.dumps.back()["window"]["vsync"].is_boolean());
}

}  // namespace
}  // namespace e2e
