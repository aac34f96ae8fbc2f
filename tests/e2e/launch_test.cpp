// The game as a program: two runs and what the preferences keep, relaunch,
// the command line, and a desktop without a display.
#include <unistd.h>

#include "e2e_fixture.h"
#include "kit/backends/files/folder_lock.h"

namespace e2e {
namespace {

using LaunchTest = EndToEndTest;

// After a start tap (and its fade), plays until the game-over screen is
// fully up, then dumps.
const char* kOneRun = "frames 10\nautoplay on\nwait 3\nautoplay off\nwait 6\ndump\n";

TEST_F(LaunchTest, TwoRunsKeepTheBestScoreAndCountTheGameOversInThePreferences) {
  const Outcome r =
      run({"--scale", "1", "--seed", "9", "--prefs-dir", prefs()},
          std::string("start\ntapbutton play\n") + kOneRun + "tapbutton again\n" + kOneRun);
  ASSERT_EQ(r.exitCode, 0) << r.err;
  ASSERT_EQ(r.dumps.size(), 2u) << r.out;
  const int first = r.dumps[0]["score"], second = r.dumps[1]["score"];
  ASSERT_TRUE(r.dumps[1]["overFlag"].get<bool>());
  EXPECT_EQ(r.dumps[1]["notifications"]["showad"], 2);
  const nlohmann::json stored = prefsFile();
  EXPECT_EQ(stored["best"], std::max(first, second)) << stored.dump();
  EXPECT_EQ(stored["cnt"], 2);

  // The next launch starts counting game overs afresh and keeps the best.
  const Outcome again =
      run({"--scale", "1", "--prefs-dir", prefs()}, "start\npref cnt\npref best\n");
  ASSERT_EQ(again.exitCode, 0) << again.err;
  EXPECT_NE(again.out.find("0\n" + std::to_string(std::max(first, second)) + "\n"),
            std::string::npos)
      << again.out;
}

// Two copies of the game on one preferences folder saved over each other's
// best score and counts; the second copy is now refused and says why.
TEST_F(LaunchTest, ASecondCopyOnTheSamePreferencesIsRefusedAndTheFirstKeepsItsBest) {
  ASSERT_EQ(
      run({"--seed", "9", "--prefs-dir", prefs()}, std::string("start\ntapbutton play\n") + kOneRun)
          .exitCode,
      0);
  const nlohmann::json before = prefsFile();

  const pid_t first = fork();
  ASSERT_GE(first, 0);
  if (first == 0) {
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
    freopen("/dev/null", "w", stderr);
    execl(TWINLANES_BINARY, TWINLANES_BINARY, "--scale", "1", "--frames", "100000", "--prefs-dir",
          prefs().c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  // Once the first copy holds the folder (or after a minute: it failed).
  for (int i = 0; i < 600 && kit::FolderLock::take(prefs()); ++i)
    usleep(100'000);
  const Outcome second = run({"--scale", "1", "--frames", "5", "--prefs-dir", prefs()});
  const Outcome script = run({"--prefs-dir", prefs()}, "start\n");
  kill(first, SIGTERM);
  int status = 0;
  waitpid(first, &status, 0);

  EXPECT_EQ(second.exitCode, 1);
  EXPECT_NE(second.err.find("twinlanes: another copy of Twin Lanes is running with the "
                            "preferences in " +
                            prefs()),
            std::string::npos)
      << second.err;
  EXPECT_EQ(script.exitCode, 1) << script.err;
  EXPECT_EQ(prefsFile()["best"], before["best"]);
}

TEST_F(LaunchTest, FramesAndScreenshotRenderTheRealWindowOfTheGivenSizeAndExit) {
  const Outcome r = run({"--scale", "1", "--size", "400x600", "--frames", "5", "--screenshot",
                         shot("frames.png"), "--prefs-dir", prefs()});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const kit::Image frames = screenshot("frames.png");
  EXPECT_EQ(frames.pixelWidth(), 400);
  EXPECT_EQ(frames.pixelHeight(), 600 + 50);          // with the phone's banner strip
  EXPECT_GT(at(frames, 200, 300).brightness(), 230);  // the play button's arrow
}

TEST_F(LaunchTest, TheProgressDemoShowsItsPanelOverTheGame) {
  // 150 frames on the script's clock: the demo counts for 180, however slowly
  // the machine draws them.
  const auto brightnessOfPlayButton = [&](bool demo) {
    std::vector<std::string> args{"--scale", "1", "--prefs-dir", prefs()};
    if (demo)
      args.push_back("--progress-demo");
    const Outcome r = run(args, "start\nframes 150\nscreenshot " + shot("shot.png") + "\n");
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return at(screenshot("shot.png"), 200, 300).brightness();
  };
  // The dark panel covers the home screen's play button while it counts.
  EXPECT_GT(brightnessOfPlayButton(false), 200);
  EXPECT_LT(brightnessOfPlayButton(true), 100);
}

TEST_F(LaunchTest, AScreenshotThatCannotBeWrittenFailsTheRun) {
  // A file size limit of one block makes the write fail part-way, as a full
  // disk does. (Never a real device such as /dev/full here: a fault that
  // replaced the target, run as root, would replace it for the whole machine.)
  const auto script = dir.path() / "limited.sh";
  std::ofstream(script)
      << "trap '' XFSZ\nulimit -f 1\nexec env -u DISPLAY SDL_VIDEODRIVER=offscreen "
      << "SDL_FRAMEBUFFER_ACCELERATION=0 '" << TWINLANES_BINARY << "' --frames 1 --screenshot '"
      << shot("shot.png") << "' --prefs-dir '" << prefs() << "' 2>'" << shot("err.txt") << "'\n";
  const int status = std::system(("bash '" + script.string() + "'").c_str());
  EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 1);
  const std::string err = read(dir.path() / "err.txt");
  EXPECT_NE(err.find("cannot write " + shot("shot.png") + ": File too large"), std::string::npos)
      << err;
  EXPECT_FALSE(std::filesystem::exists(shot("shot.png")));

  const Outcome scripted =
      run({"--prefs-dir", prefs()}, "start\nscreenshot " + shot("none/shot.png") + "\n");
  EXPECT_EQ(scripted.exitCode, 2);
  EXPECT_NE(scripted.err.find(":2: cannot write " + shot("none/shot.png")), std::string::npos)
      << scripted.err;
}

TEST_F(LaunchTest, WithoutADisplayItSaysSoOnceAndPointsToTheHeadlessMode) {
  const Outcome r = run({"--prefs-dir", prefs()}, "", false);
  EXPECT_NE(r.exitCode, 0);
  EXPECT_NE(r.err.find("no display"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("--headless"), std::string::npos) << r.err;
  EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
}

TEST_F(LaunchTest, HelpAndVersionAnswerWithoutAWindowAndBadFlagsAreRefused) {
  const Outcome help = run({"--help"}, "", false);
  EXPECT_EQ(help.exitCode, 0);
  for (const char* flag : {"--device", "--size", "--fullscreen", "--prefs-dir", "--seed",
                           "--script", "--headless", "--frames", "--screenshot"})
    EXPECT_NE(help.out.find(flag), std::string::npos) << flag;
  const Outcome version = run({"--version"}, "", false);
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_NE(version.out.find("twinlanes "), std::string::npos) << version.out;
  const Outcome size = run({"--size", "huge"}, "", false);
  EXPECT_NE(size.exitCode, 0);
  EXPECT_NE(size.err.find("--size"), std::string::npos) << size.err;
  const Outcome lang = run({"--headless", "--lang", "../en"}, "start\n");
  EXPECT_NE(lang.exitCode, 0);
  EXPECT_NE(lang.err.find("expected a language code such as en or zh-Hans"), std::string::npos)
      << lang.err;
}

}  // namespace
}  // namespace e2e
