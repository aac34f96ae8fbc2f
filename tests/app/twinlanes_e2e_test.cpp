// The twinlanes command, run as a separate process as a user or a bug report
// would run it.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kit/foundation/json.h"
#include "kit/foundation/temp_dir.h"

namespace {

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

class TwinlanesCommand : public ::testing::Test {
 protected:
  struct Result {
    int status = -1;
    std::string out;
    std::string err;
    std::vector<kit::Value> json;  // each stdout line, parsed
  };

  // Runs the binary with `arguments` (already shell-quoted where needed),
  // feeding `input` on stdin, after `prefix` (say, an env command).
  Result run(const std::string& arguments, const std::string& input = "",
             const std::string& prefix = "") {
    const auto in = dir.path() / "stdin", out = dir.path() / "stdout", err = dir.path() / "stderr";
    std::ofstream(in) << input;
    const std::string command = prefix + "'" + TWINLANES_BINARY + "' " + arguments + " < '" +
                                in.string() + "' > '" + out.string() + "' 2> '" + err.string() +
                                "'";
    const int raw = std::system(command.c_str());
    Result result;
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = readFile(out);
    result.err = readFile(err);
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
      result.json.push_back(kit::parseJson(line).value_or(kit::Value("<not JSON>")));
    }
    return result;
  }
  std::string script(const std::string& name, const std::string& text) {
    const auto path = dir.path() / name;
    std::ofstream(path) << text;
    return "'" + path.string() + "'";
  }
  std::string prefsDir() const { return "'" + (dir.path() / "prefs").string() + "'"; }

  kit::TempDir dir{"twinlanes-e2e"};
};

TEST_F(TwinlanesCommand, PlaysAScenarioFileAndPrintsOneJsonObjectPerDump) {
  const auto r = run("--headless --script '" + std::string(TWINLANES_SCENARIOS) +
                     "/crash_and_again.tl' --prefs-dir " + prefsDir());
  ASSERT_EQ(r.status, 0) << r.err;
  ASSERT_EQ(r.json.size(), 6u) << r.out;
  EXPECT_EQ(r.json[0]["overFlag"], kit::Value(true));
  EXPECT_EQ(r.json[0]["smoke"]["right"]["hidden"], kit::Value(false));
  EXPECT_EQ(r.json[5]["startFlag"], kit::Value(true));
  EXPECT_EQ(r.json[5]["seed"], kit::Value(7));
}

TEST_F(TwinlanesCommand, TheBestScoreSurvivesARelaunchWithTheSamePrefsFolder) {
  const auto first = run("--headless --seed 11 --script " +
                         script("play.tl", "start\nautoplay on\nwait 40\npref best\n") +
                         " --prefs-dir " + prefsDir());
  ASSERT_EQ(first.status, 0) << first.err;
  ASSERT_EQ(first.json.size(), 1u);
  const int64_t best = first.json[0].integerValue();
  EXPECT_GT(best, 0);

  // Read from standard input this time; "cnt" starts again from 0.
  const auto second =
      run("--headless --script - --prefs-dir " + prefsDir(), "start\npref best\npref cnt\n");
  ASSERT_EQ(second.status, 0) << second.err;
  ASSERT_EQ(second.json.size(), 2u);
  EXPECT_EQ(second.json[0], kit::Value(best));
  EXPECT_EQ(second.json[1], kit::Value(0));
  EXPECT_TRUE(std::filesystem::exists(dir.path() / "prefs" / "prefs.json"));
}

TEST_F(TwinlanesCommand, SameSeedSameGame) {
  const std::string text = "start\nautoplay on\nwait 20\ndump\n";
  const auto a = run("--headless --seed 99 --script -", text);
  const auto b = run("--headless --seed 99 --script -", text);
  ASSERT_EQ(a.status, 0) << a.err;
  EXPECT_EQ(a.out, b.out);
}

TEST_F(TwinlanesCommand, ThePadProfileGivesAPadSizedScene) {
  const auto r = run("--headless --device pad --script -", "start\ndump\n");
  ASSERT_EQ(r.status, 0) << r.err;
  ASSERT_EQ(r.json.size(), 1u);
  EXPECT_NEAR(r.json[0]["leftCar"]["w"].doubleValue(), 134.4, 1e-9);
  EXPECT_EQ(r.json[0]["lines"]["right"]["x"], kit::Value(576.0));
}

TEST_F(TwinlanesCommand, ABadScriptLineFailsWithItsLineNumberAndStatus2) {
  const auto path = script("bad.tl", "start\nframes 3\njump\ndump\n");
  const auto r = run("--headless --script " + path);
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("bad.tl:3: unknown command 'jump'"), std::string::npos) << r.err;
  EXPECT_EQ(r.out, "");

  const auto missing = run("--headless --script '" + (dir.path() / "none.tl").string() + "'");
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.err.find("cannot read the script"), std::string::npos) << missing.err;

  const auto noScript = run("--headless");
  EXPECT_EQ(noScript.status, 2);
  EXPECT_NE(noScript.err.find("--script"), std::string::npos);
}

TEST_F(TwinlanesCommand, HelpVersionAndTheWindowedModeExplainThemselves) {
  const auto version = run("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_NE(version.out.find("twinlanes 1."), std::string::npos) << version.out;

  const auto help = run("--help");
  EXPECT_EQ(help.status, 0);
  for (const char* word :
       {"--headless", "--script", "--prefs-dir", "--seed", "--device", "tapbutton", "autoplay"}) {
    EXPECT_NE(help.out.find(word), std::string::npos) << word;
  }

  // Without a display the windowed game says so and points to the headless mode.
  const auto windowed = run("", "", "env -u SDL_VIDEODRIVER -u DISPLAY -u WAYLAND_DISPLAY ");
  EXPECT_EQ(windowed.status, 1);
  EXPECT_NE(windowed.err.find("--headless --script"), std::string::npos) << windowed.err;

  const auto badDevice = run("--headless --device watch --script -");
  EXPECT_NE(badDevice.status, 0);
  EXPECT_NE(badDevice.status, 2);
}
