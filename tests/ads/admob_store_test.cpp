#include <chrono>
#include <fstream>

#include "ads/ads_fixture.h"
#include "adsdk/loopback_server.h"
#include "kit/foundation/json.h"
#include "kit/foundation/read_file.h"
#include "kit/ui/alert_view.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using AdmobCountersTest = AdsTest;

TEST_F(AdmobCountersTest, TheFirstLaunchStoresItsTimeTheCountAndTheAdUnitsAsText) {
  EXPECT_EQ(pref("first-down-load"), std::to_string(kInstallTime));
  EXPECT_EQ(pref("app-open-times"), "1");
  EXPECT_EQ(pref("banner-id"), "ca-app-pub-1234567890123456/1234567890");
  EXPECT_EQ(pref("interstitial-id"), "ca-app-pub-1234567890123456/0987654321");
  EXPECT_EQ(ads().firstOpenTime, kInstallTime);
  EXPECT_EQ(ads().openTimes, 1);

  launchAt(86400 * 3);
  EXPECT_EQ(pref("first-down-load"), std::to_string(kInstallTime));
  EXPECT_EQ(pref("app-open-times"), "2");
  EXPECT_EQ(ads().firstOpenTime, kInstallTime);
  EXPECT_EQ(ads().openTimes, 2);
}

TEST_F(AdmobCountersTest, StoredAdUnitsOverrideTheBuiltInOnes) {
  ads().setKeyTimes("banner-id", "ca-app-pub-0000000000000001/0000000001");
  launchAt(60);
  EXPECT_EQ(ads().banner_id, "ca-app-pub-0000000000000001/0000000001");
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 0}, {320, 50}});
  ads().show_admob_banner(0, 0, 320, 50, host);
  EXPECT_EQ(ads().adBanner->adUnitID(), "ca-app-pub-0000000000000001/0000000001");
}

TEST_F(AdmobCountersTest, ReadingACounterStoresItsDefault) {
  EXPECT_EQ(ads().getStrKey("fresh").type(), kit::Value::Type::Nil);
  EXPECT_EQ(ads().getKeyTimes("fresh", 5), 5);
  EXPECT_EQ(pref("fresh"), "5");
  EXPECT_EQ(ads().getKeyTimes("fresh", 9), 5);
  EXPECT_EQ(ads().getStrKey("text", "abc"), "abc");
  EXPECT_EQ(ads().getStrKey("text", "other"), "abc");

  ads().setKeyTimes("n", 42L);
  EXPECT_EQ(pref("n"), "42");
  ads().setKeyTimes("n", -7L);
  EXPECT_EQ(ads().getKeyTimes("n", 0), -7);
}

TEST_F(AdmobCountersTest, HandEditedCountersReadAsNumbersOrZero) {
  kit::UserDefaults& defaults = platform().defaults;
  defaults.setObject("not a number", "a");
  defaults.setObject("12 apples", "b");
  defaults.setObject(7, "c");
  defaults.setObject("99999999999", "d");
  defaults.setObject(kit::Value::Array{1, 2}, "e");
  EXPECT_EQ(ads().getKeyTimes("a", 3), 0);
  EXPECT_EQ(ads().getKeyTimes("b", 3), 12);
  EXPECT_EQ(ads().getKeyTimes("c", 3), 7);
  EXPECT_EQ(ads().getKeyTimes("d", 3), 2147483647);
  EXPECT_EQ(ads().getKeyTimes("e", 3), 0);

  defaults.setObject("garbage", "app-open-times");
  launchAt(10);
  EXPECT_EQ(ads().openTimes, 1);
  EXPECT_EQ(pref("app-open-times"), "1");
}

TEST_F(AdmobCountersTest, SameDayMeansLessThan24HoursApartEitherWay) {
  EXPECT_TRUE(ads().isSameDay(0, 86399));
  EXPECT_FALSE(ads().isSameDay(0, 86400));
  EXPECT_TRUE(ads().isSameDay(86399, 0));
  EXPECT_FALSE(ads().isSameDay(86400, 0));
  EXPECT_TRUE(ads().isSameDay(kInstallTime, kInstallTime));
  EXPECT_FALSE(ads().isSameDay(LONG_MIN, LONG_MAX));
  EXPECT_FALSE(ads().isSameDay(LONG_MAX, LONG_MIN));
}

TEST_F(AdmobCountersTest, TheStorePageOpensAsAStoreLink) {
  ads().openAppWithId("1234567890", root());
  ads().openAppWithId("12/../../evil", root());
  ads().openAppWithId("", root());
  EXPECT_THAT(platform().urlOpener.opened,
              ElementsAre("itms-apps://apps.twinlanes.example/us/app/id1234567890?mt=8"));
  EXPECT_TRUE(platform().log.contains("not a store identifier: 12/../../evil"));
}

TEST_F(AdmobCountersTest, AFailedMessageShowsAnAlertAndEveryResultIsLogged) {
  auto composer = std::make_shared<kit::ViewController>();
  root()->presentViewController(composer, false);
  ads().messageComposeViewControllerDidFinishWithResult(*composer, MessageComposeResult::Sent);
  EXPECT_FALSE(kit::AlertView::visibleAlert(*window()));
  ads().messageComposeViewControllerDidFinishWithResult(*composer, MessageComposeResult::Failed);
  EXPECT_THAT(platform().log.lines(), ::testing::IsSupersetOf({"send msg,1", "send msg,2"}));
  auto alert = kit::AlertView::visibleAlert(*window());
  ASSERT_TRUE(alert);
  EXPECT_EQ(alert->title(), "Error");
  EXPECT_EQ(alert->message(), "Failed to send SMS!");
  ASSERT_EQ(alert->numberOfButtons(), 1);
  EXPECT_EQ(alert->buttonTitleAtIndex(0), "OK");
  EXPECT_FALSE(alert->delegate());
}

// The store lookup against a loopback server that answers what each test
// says, with this build's version taken from a copy of the publisher config.
class CheckVersionTest : public AdsTest {
 protected:
  void SetUp() override {
    server.server.Get("/lookup", [this](const httplib::Request& request, httplib::Response& res) {
      lookups.push_back(request.get_param_value("id"));
      if (reply == "hang") {
        server.stall();
        return;
      }
      res.status = status;
      res.set_content(reply, "application/json");
    });
    server.start();
  }

  // Starts a launch whose build is `local`, looking up at the loopback server.
  void build(const std::string& local) {
    std::filesystem::copy(
        TWINLANES_RESOURCES "/strings", resources.path() / "strings",
        std::filesystem::copy_options::recursive | std::filesystem::copy_options::skip_existing);
    auto config =
        kit::parseJson(*kit::readSmallFile(TWINLANES_RESOURCES "/publisher.json", 1 << 16));
    kit::Value::Dictionary info = *config->ifDictionary();
    info["CFBundleVersion"] = local;
    std::ofstream(resources.path() / "publisher.json") << kit::toJson(kit::Value(info));
    launchAt(1, {.resources = resources.path()});
    ads().setStoreLookupHost(server.host());
    ads().setStoreLookupTimeout(1000);
  }

  bool storeHas(const std::string& version) {
    reply = R"({"resultCount": 1, "results": [{"version": ")" + version + R"("}]})";
    return ads().onCheckVersion();
  }

  kit::TempDir resources;
  LoopbackServer server;
  std::string reply;
  int status = 200;
  std::vector<std::string> lookups;
};

TEST_F(CheckVersionTest, ANewerStoreVersionIsOneThatSortsAfterThisBuildAsText) {
  build("1.0");
  EXPECT_TRUE(storeHas("1.1"));
  EXPECT_TRUE(storeHas("2.0"));
  EXPECT_FALSE(storeHas("1.0"));
  EXPECT_FALSE(storeHas("0.9"));
  EXPECT_THAT(lookups, ::testing::Each("1234567890"));

  build("1.9");
  EXPECT_FALSE(storeHas("1.10"));  // text order, not version order
  build("10.0");
  EXPECT_TRUE(storeHas("2.0"));
}

TEST_F(CheckVersionTest, AnyOddReplyMeansNoNewVersion) {
  build("1.0");
  for (const char* odd : {R"({"results": []})", R"({"resultCount": 0})", "garbage", "",
                          R"({"results": [{"version": 2}]})", R"({"results": [7]})",
                          R"({"results": {"version": "9.9"}})", R"([{"version": "9.9"}])"}) {
    reply = odd;
    EXPECT_FALSE(ads().onCheckVersion()) << odd;
  }
  reply = R"({"results": [{"version": "9.9"}]})";
  status = 404;
  EXPECT_FALSE(ads().onCheckVersion());
}

TEST_F(CheckVersionTest, ASilentStoreGivesNoWithinTheTimeLimit) {
  build("1.0");
  reply = "hang";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(ads().onCheckVersion());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

}  // namespace
