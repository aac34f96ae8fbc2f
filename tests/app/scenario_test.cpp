// Scripts played by the scenario runner: the scenario files with their
// expected fields, bad scripts, the frame clock, and whole runs.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
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
    if (line.rfind("#>", 0) == 0) {
      if (!inExpectation)
        scenario.expectations.emplace_back();
      scenario.expectations.back() += line.substr(2) + "\n";
      inExpectation = true;
    } else {
      inExpectation = false;
    }
  }
  return scenario;
}

std::vector<std::filesystem::path> scenarioFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(TWINLANES_SCENARIOS)) {
    if (entry.path().extension() == ".tl")
      files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

TEST_F(ScenarioTest, EveryScenarioFilePrintsWhatItsExpectationsSay) {
  const auto files = scenarioFiles();
  ASSERT_GE(files.size(), 5u);
  for (const auto& file : files) {
    // A fresh runner, host and preferences folder per scenario.
    kit::TempDir folder("twinlanes-scenario");
    kit::HeadlessPlatform services(folder.path(), TWINLANES_RESOURCES);
    HeadlessHost scenarioHost(services.services());
    std::ostringstream output, errors;
    ScenarioRunner scenarioRunner(services, scenarioHost, output);

    const Scenario scenario = loadScenario(file);
    std::istringstream script(scenario.script);
    ASSERT_EQ(scenarioRunner.run(script, scenario.name, errors), 0) << errors.str();

    std::vector<std::string> lines;
    std::istringstream printedLines(output.str());
    for (std::string line; std::getline(printedLines, line);)
      lines.push_back(line);
    ASSERT_EQ(lines.size(), scenario.expectations.size()) << scenario.name;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const auto expected = kit::parseJson(scenario.expectations[i]);
      const auto actual = kit::parseJson(lines[i]);
      ASSERT_TRUE(expected) << scenario.name << ": bad expectation " << scenario.expectations[i];
      ASSERT_TRUE(actual) << scenario.name << ": not JSON: " << lines[i];
      std::string where;
      EXPECT_TRUE(matches(*expected, *actual, where))
          << scenario.name << ", output line " << i + 1 << ": " << where;
    }
  }
}

TEST_F(ScenarioTest, ABadLineStopsTheScriptWithItsLineNumberAndStatus2) {
  struct Case {
    std::string script;
    std::string message;
  };
  const Case cases[] = {
      {"start\n\n# fine so far\njump 3\ndump\n", "test.tl:4: unknown command 'jump'"},
      {"start\nframes ten\ndump\n", "test.tl:2: the frame count must be a whole number"},
      {"start\nframes -1\n", "test.tl:2: the frame count must be a whole number from 0"},
      {"start\nframes 2000000000\n", "test.tl:2: the frame count must be"},
      {"start\nwait -1\n", "test.tl:2: the wait must be from 0"},
      {"start\nwait nan\n", "test.tl:2: the wait must be a finite number"},
      {"start\ntap 10\n", "test.tl:2: usage: tap X Y [X Y ...]"},
      {"start\ntap 10 20 30\n", "test.tl:2: usage: tap X Y"},
      {"start\ntap 10 abc\n", "test.tl:2: y must be a finite number, not 'abc'"},
      {"start\ntapbutton home\n", "test.tl:2: the buttons are play, helpplay and again"},
      {"start\nseed 3\n", "test.tl:2: seed must come before start"},
      {"seed -3\n", "test.tl:1: the seed must be a whole number"},
      {"start\ndevice pad 768 1024\n", "test.tl:2: device must come before start"},
      {"device tablet 768 1024\n", "test.tl:1: the device is phone or pad, not 'tablet'"},
      {"device pad 0 1024\n", "test.tl:1: the view size must be positive"},
      {"start\nstart\n", "test.tl:2: the game has already started"},
      {"dump\n", "test.tl:1: dump needs a started game"},
      {"frames 3\n", "test.tl:1: frames needs a started game"},
      {"tap 1 2\n", "test.tl:1: tap needs a started game"},
      {"autoplay maybe\n", "test.tl:1: usage: autoplay on|off"},
      {"start extra\n", "test.tl:1: usage: start"},
      {"pref\n", "test.tl:1: usage: pref KEY"},
  };
  for (const auto& c : cases) {
    kit::TempDir folder("twinlanes-scenario");
    kit::HeadlessPlatform services(folder.path(), TWINLANES_RESOURCES);
    HeadlessHost scenarioHost(services.services());
    std::ostringstream output, errors;
    ScenarioRunner scenarioRunner(services, scenarioHost, output);
    std::istringstream script(c.script);
    EXPECT_EQ(scenarioRunner.run(script, "test.tl", errors), 2) << c.script;
    EXPECT_EQ(errors.str().rfind(c.message, 0), 0u) << "script:\n"
                                                    << c.script << "said: " << errors.str();
    EXPECT_EQ(output.str(), "") << c.script;  // nothing after the bad line ran
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

TEST_F(ScenarioTest, StartDoesWhatTheHostDoesAtEveryLaunch) {
  platform.defaults.setInteger(5, "cnt");
  platform.defaults.setBool(false, "first");
  platform.defaults.setBool(false, "sound");
  platform.defaults.setInteger(12, "best");
  ASSERT_EQ(runScript("start\npref cnt\npref first\npref best\npref sound\ndump\n"), 0);
  const auto out = printed();
  ASSERT_EQ(out.size(), 5u);
  EXPECT_EQ(out[0], kit::Value(0));
  EXPECT_EQ(out[1], kit::Value(true));
  EXPECT_EQ(out[2], kit::Value(12));
  EXPECT_EQ(out[3], kit::Value(false));
  EXPECT_EQ(out[4]["soundFlag"], kit::Value(false));
  // Written through to the file at once.
  kit::CapturingLog log;
  kit::UserDefaults reread(prefs.path(), log);
  EXPECT_EQ(reread.integerForKey("cnt"), 0);
  EXPECT_TRUE(reread.boolForKey("first"));
}

TEST_F(ScenarioTest, TheDumpReportsLogLinesOnceAndTheUrlsOpened) {
  ASSERT_EQ(runScript("start\n"), 0);
  platform.log.write("first line");
  platform.log.write("second line");
  runner.scene()->rateUs();
  ASSERT_EQ(runScript("dump\ndump\n"), 0);
  const auto out = printed();
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0]["log"], (kit::Value(kit::Value::Array{"first line", "second line"})));
  EXPECT_EQ(out[1]["log"], kit::Value(kit::Value::Array{}));
  ASSERT_TRUE(out[1]["openedURLs"].ifArray());
  ASSERT_EQ(out[1]["openedURLs"].ifArray()->size(), 1u);
  EXPECT_EQ(at(out[1]["openedURLs"], 0).stringValue().value_or("").rfind("itms-apps://", 0), 0u);
}

// --- Whole runs ----------------------------------------------------------------

namespace {

// A runner of its own, for searching seeds.
struct Session {
  explicit Session(unsigned seed) {
    runner.setSeed(seed);
    runner.start();
  }
  kit::TempDir folder{"twinlanes-session"};
  kit::HeadlessPlatform services{folder.path(), TWINLANES_RESOURCES};
  HeadlessHost sessionHost{services.services()};
  std::ostringstream output;
  ScenarioRunner runner{services, sessionHost, output};
};

}  // namespace

TEST_F(ScenarioTest, ARunEndedByACircleLetThroughBlinksItAndShowsNoFlames) {
  // Find a seed whose first run, with nobody steering, ends by a let-through.
  std::optional<unsigned> found;
  for (unsigned seed = 1; seed <= 200 && !found; ++seed) {
    Session session(seed);
    session.runner.execute("tapbutton play");
    session.runner.runFrames(6 * 60);
    const kit::Value state = session.runner.dump();
    if (state["overFlag"] == kit::Value(true) &&
        state["smoke"]["left"]["hidden"] == kit::Value(true) &&
        state["smoke"]["right"]["hidden"] == kit::Value(true)) {
      found = seed;
    }
  }
  ASSERT_TRUE(found);

  ASSERT_EQ(runScript("seed " + std::to_string(*found) + "\nstart\ntapbutton play\nwait 6\ndump\n"),
            0);
  const kit::Value state = lastDump();
  // The circle that ended it lies below the cars' line yet still on screen.
  bool sawCircle = false;
  for (const auto& obstacle : *state["obstacles"].ifArray()) {
    const double top = obstacle["y"].doubleValue() + obstacle["h"].doubleValue() * 0.6;
    if (obstacle["type"] == kit::Value(0) && top + 21 < 92) {
      sawCircle = true;
      EXPECT_GT(obstacle["y"].doubleValue(), 0);
      EXPECT_EQ(obstacle["moving"], kit::Value(false));
    }
  }
  EXPECT_TRUE(sawCircle);
  EXPECT_EQ(state["smoke"]["left"]["animating"], kit::Value(false));
  EXPECT_EQ(state["notifications"]["showad"], kit::Value(1));
}

TEST_F(ScenarioTest, AFullRunPlaysCollectsCrashesAndPlaysAgain) {
  constexpr unsigned kSeed = 11;
  // Where the built-in player's first run ends with this seed.
  int64_t end = -1;
  {
    Session probe(kSeed);
    probe.runner.setAutoplay(true);
    while (probe.runner.frame() < 60 * 600 && !probe.runner.scene()->overFlag) {
      probe.runner.runFrames(1);
    }
    ASSERT_TRUE(probe.runner.scene()->overFlag);
    end = probe.runner.frame();
  }

  const std::string script = "seed " + std::to_string(kSeed) +
                             "\n"
                             "start\n"
                             "autoplay on\n"
                             "frames " +
                             std::to_string(end - 1) +
                             "\n"
                             "dump\n"
                             "frames 1\n"
                             "dump\n"
                             "pref best\n"
                             "wait 1.2\n"
                             "dump\n";
  ASSERT_EQ(runScript(script), 0) << err.str();
  const auto out = printed();
  ASSERT_EQ(out.size(), 4u);
  const kit::Value& playing = out[0];
  const kit::Value& over = out[1];
  const kit::Value& again = out[3];

  // Playing, with circles collected.
  EXPECT_EQ(playing["startFlag"], kit::Value(true));
  const int64_t score = playing["score"].integerValue();
  EXPECT_GE(score, 5);
  EXPECT_EQ(playing["labels"]["score"], kit::Value(std::to_string(score)));

  // The crash (or let-through) ends it; the score is a new best.
  EXPECT_EQ(over["overFlag"], kit::Value(true));
  EXPECT_EQ(over["startFlag"], kit::Value(false));
  EXPECT_EQ(over["labels"]["overScore"], kit::Value(std::to_string(over["score"].integerValue())));
  EXPECT_EQ(over["labels"]["overBest"], kit::Value("新记录"));
  EXPECT_EQ(out[2], over["score"]);

  // The player pressed play again once the score screen was up.
  EXPECT_EQ(again["startFlag"], kit::Value(true));
  EXPECT_EQ(again["overFlag"], kit::Value(false));
  EXPECT_EQ(again["notifications"]["showad"], kit::Value(1));
  EXPECT_EQ(again["score"], kit::Value(0));
  EXPECT_EQ(again["smoke"]["left"]["hidden"], kit::Value(true));
  EXPECT_EQ(again["smoke"]["right"]["hidden"], kit::Value(true));
}

TEST_F(ScenarioTest, ARoadWhoseLatestSpawnWasCollectedSaysSoInTheDump) {
  ASSERT_EQ(runScript("seed 11\nstart\nautoplay on\n"), 0);
  bool sawCollected = false;
  for (int i = 0; i < 60 * 30 && !sawCollected; ++i) {
    runner.runFrames(1);
    const kit::Value lastnode = runner.dump()["lastnode"];
    const GameScene& s = *runner.scene();
    const std::shared_ptr<Obstacle> last[4] = {s.lastnode1, s.lastnode2, s.lastnode3, s.lastnode4};
    for (int road = 0; road < 4; ++road) {
      const kit::Value entry = at(lastnode, road);
      if (entry == kit::Value("collected")) {
        sawCollected = true;
        EXPECT_EQ(std::count(s.allObstacle.begin(), s.allObstacle.end(), last[road]), 0);
      } else if (last[road]) {
        EXPECT_EQ(s.allObstacle.at(entry.integerValue()), last[road]);
      } else {
        EXPECT_TRUE(entry.isNil());
      }
    }
  }
  EXPECT_TRUE(sawCollected);
}
