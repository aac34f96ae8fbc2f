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

// A script with one line that cannot run, and the start of what the runner
// says about it.
struct BadLine {
  const char* name;
  const char* script;
  const char* message;
};

class BadScript : public ScenarioTest, public ::testing::WithParamInterface<BadLine> {};

TEST_P(BadScript, StopsAtTheBadLineWithItsNumberAndStatus2) {
  const BadLine& bad = GetParam();
  Session session;
  EXPECT_EQ(session.run(bad.script), 2);
  EXPECT_EQ(session.errors.str().rfind(bad.message, 0), 0u) << session.errors.str();
  EXPECT_EQ(session.output.str(), "");  // nothing after the bad line ran
}

INSTANTIATE_TEST_SUITE_P(
    Lines, BadScript,
    ::testing::Values(
        BadLine{"UnknownCommand", "start\n\n# fine so far\njump 3\ndump\n",
                "test.tl:4: unknown command 'jump'"},
        BadLine{"FramesNotANumber", "start\nframes ten\ndump\n",
                "test.tl:2: the frame count must be a whole number"},
        BadLine{"NegativeFrames", "start\nframes -1\n",
                "test.tl:2: the frame count must be a whole number from 0"},
        BadLine{"NegativeWait", "start\nwait -1\n", "test.tl:2: the wait must be from 0"},
        BadLine{"TapWithoutY", "start\ntap 10 20 30\n", "test.tl:2: usage: tap X Y"},
        BadLine{"TapNotANumber", "start\ntap 10 abc\n",
                "test.tl:2: y must be a finite number, not 'abc'"},
        BadLine{"UnknownButton", "start\ntapbutton home\n",
                "test.tl:2: the buttons are play, helpplay and again"},
        BadLine{"SeedAfterStart", "start\nseed 3\n", "test.tl:2: seed must come before start"},
        BadLine{"UnknownDevice", "device tablet 768 1024\n",
                "test.tl:1: the device is phone or pad, not 'tablet'"},
        BadLine{"StartTwice", "start\nstart\n", "test.tl:2: the game has already started"},
        BadLine{"DumpBeforeStart", "dump\n", "test.tl:1: dump needs a started game"},
        BadLine{"AutoplayMaybe", "autoplay maybe\n", "test.tl:1: usage: autoplay on|off"}),
    [](const ::testing::TestParamInfo<BadLine>& info) { return std::string(info.param.name); });

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
    while (probe.runner.frame() < 60 * 600 && !probe.runner.scene()->overFlag()) {
      probe.runner.runFrames(1);
    }
    ASSERT_TRUE(probe.runner.scene()->overFlag());
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

namespace {

// The rows of the README's scenario command table: usage (backticks and the
// table's escaped bars undone) and meaning.
std::vector<std::pair<std::string, std::string>> readmeCommandRows() {
  std::ifstream readme(TWINLANES_README);
  std::vector<std::pair<std::string, std::string>> rows;
  std::string line;
  bool inTable = false;
  while (std::getline(readme, line)) {
    if (line == "| Command | Meaning |") {
      inTable = true;
      continue;
    }
    if (!inTable || line.rfind("| --- ", 0) == 0)
      continue;
    if (line.rfind("| `", 0) != 0)
      break;
    const std::size_t close = line.find("` | ");
    std::string usage = line.substr(3, close - 3);
    for (std::size_t bar; (bar = usage.find("\\|")) != std::string::npos;)
      usage.erase(bar, 1);
    std::string meaning = line.substr(close + 4);
    meaning.erase(meaning.size() - 2);  // " |"
    rows.emplace_back(usage, meaning);
  }
  return rows;
}

}  // namespace

TEST_F(ScenarioTest, TheReadmeListsEveryCommandOfTheRunnersTableInOrder) {
  std::vector<std::pair<std::string, std::string>> table;
  for (const ScenarioRunner::Command& command : ScenarioRunner::commands())
    table.emplace_back(command.usage, command.meaning);
  EXPECT_EQ(readmeCommandRows(), table);
}

TEST_F(ScenarioTest, ACommandWithTheWrongWordsAnswersWithItsUsageFromTheTable) {
  for (const ScenarioRunner::Command& command : ScenarioRunner::commands()) {
    Session session;
    // Eleven more words fit no command (tap takes pairs after its name).
    EXPECT_EQ(session.run(std::string(command.name()) + " 1 2 3 4 5 6 7 8 9 10 11\n"), 2);
    EXPECT_EQ(session.errors.str(), "test.tl:1: usage: " + std::string(command.usage) + "\n")
        << command.name();
  }
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
