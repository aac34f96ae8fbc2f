// The rating prompt over several launches of the whole host, as scripts play
// it: when it comes, what each answer does, the mail and the toast.
#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

#include "app/scenario_runner.h"
#include "app/script_launches.h"
#include "kit/foundation/json.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/application.h"

namespace kit {
// Failure messages show values as JSON.
inline void PrintTo(const Value& value, std::ostream* os) {
  *os << toJson(value);
}
}  // namespace kit

namespace {

using ::testing::ElementsAre;

constexpr int64_t kInstall = 1'800'000'000;

class RatingScenarioTest : public ::testing::Test {
 protected:
  RatingScenarioTest() : launches({prefs.path(), TWINLANES_RESOURCES, false, 0, {}, kInstall}) {
    runner.attachAds(launches.ads());
    runner.setRelauncher([this] {
      launches.relaunch();
      return ScenarioRunner::Launch{launches.platform(), launches.host(), &launches.ads()};
    });
  }

  // Runs the script; a line it refuses fails the test.
  void play(const std::string& script) {
    std::istringstream in(script);
    ASSERT_EQ(runner.run(in, "rating.tl", err), 0) << err.str();
  }
  // A launch an hour after the previous one, brought up and settled.
  static std::string nextLaunch(int hour) {
    return "now " + std::to_string(kInstall + hour * 3600) + "\nrelaunch\nwait 1\n";
  }
  kit::Value dump() { return runner.dump(); }
  bool alertUp() { return !dump()["alert"].isNil(); }
  kit::Value pref(const std::string& key) { return runner.pref(key); }

  kit::TempDir prefs{"twinlanes-rating-scenario"};
  ScriptLaunches launches;
  std::ostringstream out;
  std::ostringstream err;
  ScenarioRunner runner{launches.platform(), launches.host(), out};
};

TEST_F(RatingScenarioTest, PromptComesOnTheSecondToFourthLaunchesWhileTheAnswerIsNotNow) {
  play("seed 4\nstart\nwait 1\n");
  std::vector<bool> shown{alertUp()};
  for (int hour = 1; hour < 7; ++hour) {
    play(nextLaunch(hour));
    shown.push_back(alertUp());
    if (shown.back())
      play("tapalert 0\nwait 1\n");
  }
  EXPECT_THAT(shown, ElementsAre(false, true, true, true, false, false, false));
  EXPECT_EQ(pref("cz_appopened"), kit::Value(7));
  EXPECT_EQ(pref("cz_firstin"), kit::Value(kInstall));
  EXPECT_TRUE(pref("cz_rated").isNil());
}

TEST_F(RatingScenarioTest, RatingOpensTheStorePageAndThePromptNeverReturns) {
  play("start\nwait 1\n" + nextLaunch(1));
  EXPECT_EQ(dump()["alert"]["buttons"],
            kit::Value(kit::Value::Array{"Not now", "Rate it now", "No, send feedback"}));
  // The prompt is modal: the play button under it cannot be pressed.
  launches.host().application()->pressPrimary();
  play("wait 1\n");
  EXPECT_EQ(dump()["startFlag"], kit::Value(false));

  play("tapalert 1\nwait 1\n");
  EXPECT_EQ(dump()["openedURLs"],
            kit::Value(kit::Value::Array{"itms-apps://apps.twinlanes.example/app/id1234567890"}));
  EXPECT_EQ(pref("cz_rated"), kit::Value(true));
  play(nextLaunch(2));
  EXPECT_FALSE(alertUp());
}

TEST_F(RatingScenarioTest, DecliningComposesTheFeedbackMail) {
  play("start\nwait 1\n" + nextLaunch(1) + "tapalert 2\nwait 2\n");
  const kit::Value state = dump();
  ASSERT_EQ(state["mails"].ifArray()->size(), 1u);
  const kit::Value& mail = state["mails"].ifArray()->front();
  EXPECT_EQ(mail["to"], kit::Value(kit::Value::Array{"support@twinlanes.example"}));
  EXPECT_EQ(mail["subject"], kit::Value("Twin Lanes Feedback"));
  EXPECT_NE(mail["body"].ifString()->find("<br />Version:v1.0<br />"), std::string::npos);
  // The mail survives the next launch, which does not ask again.
  play(nextLaunch(2));
  EXPECT_FALSE(alertUp());
  EXPECT_EQ(dump()["mails"].ifArray()->size(), 1u);
}

TEST_F(RatingScenarioTest, WithoutMailTheNoticeShowsForOneAndAHalfSeconds) {
  play("mail unavailable\nstart\nwait 1\n" + nextLaunch(1) + "tapalert 2\nwait 0.5\n");
  EXPECT_EQ(dump()["toasts"],
            kit::Value(kit::Value::Array{"Sorry, no mail app is set up on this device."}));
  play("wait 1.2\n");  // 0.2 s in, 1.5 s up, 0.2 s out
  EXPECT_EQ(dump()["toasts"].ifArray()->size(), 1u);
  play("wait 0.5\n");
  EXPECT_EQ(dump()["toasts"], kit::Value(kit::Value::Array{}));
  EXPECT_EQ(pref("cz_rated"), kit::Value(true));
}

}  // namespace
