// The rating prompt as a player meets it: the binary launched again and again
// on one preferences folder, the prompt over the home screen in English and
// Chinese, and the game itself prompting on its second launch.
#include "e2e_fixture.h"

namespace e2e {
namespace {

constexpr long long kInstall = 1'800'000'000;

class RatingPromptTest : public EndToEndTest {
 protected:
  // One launch of the binary, `hours` after the first, that settles and dumps.
  Outcome launchAfter(int hours, const std::string& then = "") {
    return run({"--headless", "--prefs-dir", prefs()},
               "now " + std::to_string(kInstall + hours * 3600) + "\nstart\nwait 1\ndump\n" + then);
  }

  // The prompt over the home screen, in a window one pixel per point.
  kit::Image promptShot(const std::string& name, const std::string& language) {
    const std::string script = "now " + std::to_string(kInstall) + "\nstart\nwait 0.5\nnow " +
                               std::to_string(kInstall + 3600) + "\nrelaunch\nwait 1\nscreenshot " +
                               shot(name) + "\ndump\n";
    const Outcome r = run({"--scale", "1", "--lang", language, "--prefs-dir", prefs()}, script);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return screenshot(name);
  }

  // A light panel in the middle of a dimmed screen, with dark text on it.
  static void expectPromptDrawn(const kit::Image& shot) {
    EXPECT_LT(at(shot, 10, 60).brightness(), 90);
    EXPECT_GT(at(shot, 160, 284).brightness(), 200);
    const auto panel = [&](auto test) { return count(shot, 25, 150, 295, 430, test); };
    EXPECT_GT(panel([](Rgb p) { return p.r > 235 && p.b > 235; }), 270 * 200 / 2);
    EXPECT_GT(panel([](Rgb p) { return p.brightness() < 100; }), 300);  // the message
    EXPECT_GT(panel([](Rgb p) { return p.b > 200 && p.r < 80 && p.g > 80 && p.g < 160; }),
              200);  // the buttons' titles
  }
};

TEST_F(RatingPromptTest, LaunchesOfTheBinaryPromptOnTheSecondAndThirdUntilTheAnswerIsRate) {
  std::vector<bool> shown;
  for (int launch = 0; launch < 5; ++launch) {
    const Outcome r = launchAfter(launch, launch == 2 ? "tapalert 1\nwait 1\ndump\n" : "");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ASSERT_FALSE(r.dumps.empty()) << r.out;
    shown.push_back(!r.dumps[0]["alert"].is_null());
    if (launch == 2) {
      ASSERT_EQ(r.dumps.size(), 2u);
      EXPECT_EQ(r.dumps[1]["openedURLs"],
                nlohmann::json::array({"itms-apps://apps.twinlanes.example/app/id1234567890"}));
    }
  }
  EXPECT_EQ(shown, (std::vector<bool>{false, true, true, false, false}));
  const nlohmann::json stored = prefsFile();
  EXPECT_EQ(stored["cz_appopened"], 5);
  EXPECT_EQ(stored["cz_firstin"], kInstall);
  EXPECT_EQ(stored["cz_rated"], true);
}

TEST_F(RatingPromptTest, APlayButtonUnderThePromptCannotBePressedAndTheScriptSaysWhy) {
  ASSERT_EQ(launchAfter(0).exitCode, 0);
  const Outcome r = launchAfter(1, "tapbutton play\n");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find(":5: the play button is covered by the alert '"), std::string::npos)
      << r.err;
}

TEST_F(RatingPromptTest, ThePromptShowsOverTheHomeScreenInEnglishAndInChinese) {
  expectPromptDrawn(promptShot("prompt-en.png", "en"));
  std::filesystem::remove_all(prefs());
  expectPromptDrawn(promptShot("prompt-zh.png", "zh-Hans"));
}

TEST_F(RatingPromptTest, TheGameItselfPromptsOnASecondLaunch) {
  // A first launch an hour ago, as the preferences remember it.
  std::filesystem::create_directories(prefs());
  std::ofstream(dir.path() / "prefs" / "prefs.json")
      << R"({"cz_firstin": )" << (std::time(nullptr) - 3600) << R"(, "cz_appopened": 1})";
  const Outcome r = run(
      {"--scale", "1", "--prefs-dir", prefs(), "--frames", "40", "--screenshot", shot("game.png")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  expectPromptDrawn(screenshot("game.png"));
  EXPECT_EQ(prefsFile()["cz_appopened"], 2);
}

}  // namespace
}  // namespace e2e
