// The game on a real X server (Xvfb), as a player's desktop runs it.

#include <unistd.h>

#include <chrono>
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
      unsetenv("SDL_VIDEODRIVER");
      setenv("XDG_DATA_HOME", (dir.path() / "data").c_str(), 1);
      std::vector<std::string> all{"xvfb-run", "-a", "-s", "-screen 0 1280x1024x24",
                                   TWINLANES_BINARY};
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

}  // namespace
}  // namespace e2e
