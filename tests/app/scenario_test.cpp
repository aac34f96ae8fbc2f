// Scripts played by the scenario runner: the scenario files with their
// expected fields, bad scripts, the frame clock, and whole runs.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "scenario_fixture.h"

namespace {

// A script and the expectations written under its output commands: each run
// of lines starting "#>" is one JSON object (or value) for the next line the
// script prints.
struct Scenario {
  std::string name;
  std::string script;
  std::vector<std::string> expectations;
};

Scenario loadScenario(const std::filesystem::path& file) {
  Scenario scenario{file.filename().string(), {}, {}};
  std::ifstream in(file);
  std::string line;
  bool inExpectation = false;
  while (std::getline(in, line)) {
    scenario.script += line + "\n";
    const bool expectation = line.rfind("#>", 0) == 0;
    if (expectation && !inExpectation)
      scenario.expectations.emplace_back();
    if (expectation)
      scenario.expectations.back() += line.substr(2) + "\n";
    inExpectation = expectation;
  }
  return scenario;
}

// A runner with a host and preferences folder of its own.
struct Session {
  int run(const std::string& text, const std::string& name = "test.tl") {
    std::istringstream script(text);
    return runner.run(script, name, errors);
  }
  kit::TempDir folder{"twinlanes-session"};
  kit::HeadlessPlatform services{folder.path(), TWINLANES_RESOURCES};
  HeadlessHost sessionHost{services.services()};
  std::ostringstream output, errors;
  ScenarioRunner runner{services, sessionHost, output};
};

}  // namespace

TEST_F(ScenarioTest, EveryScenarioFilePrintsWhatItsExpectationsSay) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TWINLANES_SCENARIOS)) {
    Session session;  // a fresh runner, host and preferences folder per scenario
    const Scenario scenario = loadScenario(entry.path());
    ASSERT_EQ(session.run(scenario.script, scenario.name), 0) << session.errors.str();
    std::istringstream lines(session.output.str());
    std::size_t i = 0;
    for (std::string line; std::getline(lines, line); ++i) {
      ASSERT_LT(i, scenario.expectations.size()) << scenario.name << " printed more: " << line;
      const auto expected = kit::parseJson(scenario.expectations[i]);
      ASSERT_TRUE(expected) << scenario.name << ": bad expectation " << scenario.expectations[i];
      std::string where;
      EXPECT_TRUE(
          matches(*expected, kit::parseJson(line).value_or(kit::Value("<not JSON>")), where))
          << scenario.name << ", output line " << i + 1 << ": " << where;
    }
    EXPECT_EQ(i, scenario.expectations.size()) << scenario.name;
    ++files;
  }
  EXPECT_GE(files, 5);
}

TEST_F(ScenarioTest, ABadLineStopsTheScriptWithItsLineNumberAndStatus2) {
  const std::pair<std::string, std::string> cases[] = {
      {"start\n\n# fine so far\njump 3\ndump\n", "test.tl:4: unknown command 'jump'"},
      {"start\nframes ten\ndump\n", "test.tl:2: the frame count must be a whole number"},
      {"start\nframes -1\n", "test.tl:2: the frame count must be a whole number from 0"},
      {"start\nwait -1\n", "test.tl:2: the wait must be from 0"},
      {"start\ntap 10 20 30\n", "test.tl:2: usage: tap X Y"},
      {"start\ntap 10 abc\n", "test.tl:2: y must be a finite number, not 'abc'"},
      {"start\ntapbutton home\n", "test.tl:2: the buttons are play, helpplay and again"},
      {"start\nseed 3\n", "test.tl:2: seed must come before start"},
      {"device tablet 768 1024\n", "test.tl:1: the device is phone or pad, not 'tablet'"},
      {"start\nstart\n", "test.tl:2: the game has already started"},
      {"dump\n", "test.tl:1: dump needs a started game"},
      {"autoplay maybe\n", "test.tl:1: usage: autoplay on|off"},
  };
  for (const auto& [script, message] : cases) {
    Session session;
    EXPECT_EQ(session.run(script), 2) << script;
    EXPECT_EQ(session.errors.str().rfind(message, 0), 0u) << script << session.errors.str();
    EXPECT_EQ(session.output.str(), "") << script;  // nothing after the bad line ran
  }
}

TEST_F(ScenarioTest, FramesRunOnAnExactSixtyHertzGrid) {
  ASSERT_EQ(
      runScript("# comments and blank lines are skipped\n\n  \nstart\t\nframes 60 # trailing\n"), 0)
      << err.str();
  // Frame k runs at k * 10^9 / 60 ns, the first at 0.
  EXPECT_EQ(platform.clock.monotonicNanos(), 59 * kit::kNanosPerSecond / 60);
  ASSERT_EQ(runScript("wait 1.5\nwait 0.01\nwait 0.005\n"), 0) << err.str();
  EXPECT_EQ(runner.frame(), 60 + 90 + 1 + 0);
  EXPECT_EQ(platform.clock.monotonicNanos(), 150 * kit::kNanosPerSecond / 60);
}

TEST_F(ScenarioTest, AFullRunPlaysCollectsCrashesAndPlaysAgain) {
  // Where the built-in player's first run ends with seed 11.
  int64_t end = -1;
  {
    Session probe;
    probe.runner.setSeed(11);
    probe.runner.start();
    probe.runner.setAutoplay(true);
    while (probe.runner.frame() < 60 * 600 && !probe.runner.scene()->overFlag) {
      probe.runner.runFrames(1);
    }
    ASSERT_TRUE(probe.runner.scene()->overFlag);
    end = probe.runner.frame();
  }

  ASSERT_EQ(runScript("seed 11\nstart\nautoplay on\nframes " + std::to_string(end - 1) +
                      "\ndump\nframes 1\ndump\npref best\nwait 1.2\ndump\n"),
            0)
      << err.str();
  const auto out = printed();
  ASSERT_EQ(out.size(), 4u);
  const kit::Value &playing = out[0], &over = out[1], &again = out[3];
  // Playing, with circles collected.
  EXPECT_EQ(playing["startFlag"], kit::Value(true));
  EXPECT_GE(playing["score"].integerValue(), 5);
  EXPECT_EQ(playing["labels"]["score"],
            kit::Value(std::to_string(playing["score"].integerValue())));

  // The crash (or let-through) ends it; the score is a new best.
  EXPECT_EQ(over["overFlag"], kit::Value(true));
  EXPECT_EQ(over["labels"]["overBest"], kit::Value("新记录"));
  EXPECT_EQ(out[2], over["score"]);

  // The player pressed play again once the score screen was up.
  EXPECT_EQ(again["startFlag"], kit::Value(true));
  EXPECT_EQ(again["overFlag"], kit::Value(false));
  EXPECT_EQ(again["notifications"]["showad"], kit::Value(1));
  EXPECT_EQ(again["score"], kit::Value(0));
}

TEST_F(ScenarioTest, ADeviceSizeNoWindowCanHaveIsRefusedBeforeThePhysicsSeesIt) {
  for (const char* size : {"1e39 1e39", "0.5 568", "320 20000", "320 0"}) {
    Session session;
    EXPECT_EQ(session.run(std::string("device phone ") + size + "\nstart\n"), 2) << size;
    EXPECT_EQ(session.errors.str(),
              "test.tl:1: the view size must be from 1 to 10000 points each way\n");
    EXPECT_FALSE(session.runner.scene());
  }
}

TEST_F(ScenarioTest, UnreadableScriptsAndEndlessLinesFailWithBoundedMessages) {
  // A folder opens, but cannot be read.
  kit::TempDir folder{"twinlanes-folder"};
  std::ifstream unreadable(folder.path());
  EXPECT_EQ(runner.run(unreadable, "dir", err), 2);
  EXPECT_EQ(err.str(), "dir: cannot read the script\n");

  // A line without an end is not read whole, and a bad word is not echoed whole.
  const std::string endless(ScenarioRunner::kMaxLineBytes + 1, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"start\n" + endless, "test.tl:2: the line is longer than 65536 bytes\n"},
      {std::string(60'000, 'y') + "\n",
       "test.tl:1: unknown command 'yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy...' (60000 bytes)\n"},
  };
  for (const auto& [script, message] : cases) {
    Session session;
    EXPECT_EQ(session.run(script), 2);
    EXPECT_EQ(session.errors.str(), message);
  }
}

TEST_F(ScenarioTest, AByteOrderMarkStartsAScriptAndWaitBeforeStartIsBlamedOnWait) {
  Session marked;
  EXPECT_EQ(marked.run("\xEF\xBB\xBFstart\r\nframes 1\r\n"), 0) << marked.errors.str();
  EXPECT_TRUE(marked.runner.scene());
  Session early;
  EXPECT_EQ(early.run("wait 1\n"), 2);
  EXPECT_EQ(early.errors.str(), "test.tl:1: wait needs a started game (start first)\n");
}
