#include <chrono>
#include <fstream>

#include "ads/ads_fixture.h"
#include "adsdk/loopback_server.h"
#include "kit/foundation/json.h"
#include "kit/foundation/read_file.h"
#include "names/preference_keys.h"

namespace {

using ::testing::ElementsAre;

using AdmobCountersTest = AdmobViewControllerTest;

TEST_F(AdmobCountersTest, LaunchesStoreTheFirstTimeTheCountAndTheAdUnitsAsText) {
  EXPECT_EQ(pref("first-down-load"), std::to_string(kInstallTime));
  EXPECT_EQ(pref("app-open-times"), "1");
  EXPECT_EQ(pref("banner-id"), "ca-app-pub-1234567890123456/1234567890");

  ads().setKeyTimes("banner-id", "ca-app-pub-0000000000000001/0000000001");
  launchAt(86400 * 3);
  EXPECT_EQ(pref("first-down-load"), std::to_string(kInstallTime));
  EXPECT_EQ(pref("app-open-times"), "2");
  EXPECT_EQ(ads().bannerUnitId(), "ca-app-pub-0000000000000001/0000000001") << "stored units win";
}

TEST_F(AdmobCountersTest, ACounterReadStoresItsDefaultAndOddTextReadsAsANumberOrZero) {
  EXPECT_EQ(ads().getKeyTimes("fresh", 5), 5);
  EXPECT_EQ(pref("fresh"), "5");
  EXPECT_EQ(ads().getKeyTimes("fresh", 9), 5);
  const std::pair<kit::Value, long> odd[] = {
      {"no number", 0}, {"12 apples", 12}, {"99999999999", 2147483647}, {kit::Value::Array{}, 0}};
  for (const auto& [value, read] : odd) {
    platform().defaults.setObject(value, "odd");
    EXPECT_EQ(ads().getKeyTimes("odd", 3), read);
  }
  // Same day means less than 24 hours apart, either way.
  EXPECT_TRUE(ads().isSameDay(0, 86399));
  EXPECT_FALSE(ads().isSameDay(0, 86400));
  EXPECT_FALSE(ads().isSameDay(86400, 0));
  EXPECT_FALSE(ads().isSameDay(LONG_MIN, LONG_MAX));
}

TEST_F(AdmobCountersTest, TheStorePageOpensAsAStoreLinkForAnIdentifierOnly) {
  ads().openAppWithId("1234567890", root());
  ads().openAppWithId("12/../../evil", root());
  EXPECT_THAT(platform().urlOpener.opened,
              ElementsAre("itms-apps://apps.twinlanes.example/us/app/id1234567890?mt=8"));
  EXPECT_TRUE(platform().log.contains("not a store identifier: 12/../../evil"));
}

TEST_F(AdmobCountersTest, AStoreIdBeyond32BitsIsNoIdNotAnotherAppsId) {
  // 5529535186 is 2^32 + 1234567890: cut to 32 bits it would be this app's.
  kit::TempDir resources;
  std::filesystem::copy(TWINLANES_RESOURCES, resources.path(),
                        std::filesystem::copy_options::recursive);
  std::string publisher = *kit::readSmallFile(resources.path() / "publisher.json", 1 << 20);
  publisher.replace(publisher.find("1234567890"), 10, "5529535186");
  std::ofstream(resources.path() / "publisher.json") << publisher;
  launchAt(0, {.resources = resources.path()});
  EXPECT_EQ(ads().appStoreId(), 0);
  EXPECT_TRUE(platform().log.contains("appStoreId 5529535186 is not a store id"));
  launchAt(1);
  EXPECT_EQ(ads().appStoreId(), 1234567890);
}

TEST_F(AdmobCountersTest, AStoredAdUnitTheNetworkWouldRefuseGivesWayToThePublishers) {
  ads().setKeyTimes(prefkey::kBannerId, "not a unit");
  ads().setKeyTimes(prefkey::kInterstitialId, "");
  launchAt(60);
  EXPECT_EQ(ads().bannerUnitId(), "ca-app-pub-1234567890123456/1234567890");
  EXPECT_EQ(ads().interstitialUnitId(), "ca-app-pub-1234567890123456/0987654321");
  EXPECT_EQ(pref("banner-id"), "ca-app-pub-1234567890123456/1234567890");
}

// The store lookup against a loopback server, from a build of a given version.
class CheckVersionTest : public AdmobViewControllerTest {
 protected:
  void SetUp() override {
    server.server.Get("/lookup", [this](const httplib::Request& request, httplib::Response& res) {
      EXPECT_EQ(request.get_param_value("id"), "1234567890");
      if (reply == "hang")
        return server.stall();
      res.set_content(reply, "application/json");
    });
    server.start();
    std::filesystem::create_directory_symlink(TWINLANES_RESOURCES "/strings",
                                              resources.path() / "strings");
  }

  // Starts a launch whose build is `local`, looking up at the loopback server.
  void build(const std::string& local) {
    auto config =
        kit::parseJson(*kit::readSmallFile(TWINLANES_RESOURCES "/publisher.json", 1 << 16));
    kit::Value::Dictionary info = *config->ifDictionary();
    info["CFBundleVersion"] = local;
    std::ofstream(resources.path() / "publisher.json") << kit::toJson(kit::Value(info));
    launchAt(1, {.resources = resources.path()});
    ads().setStoreLookupHost(server.host());
    // Generous, so a loaded machine still gets its answers in time.
    ads().setStoreLookupTimeout(5000);
  }

  bool storeHas(const std::string& version) {
    reply = R"({"resultCount": 1, "results": [{"version": ")" + version + R"("}]})";
    return ads().onCheckVersion();
  }

  kit::TempDir resources;
  std::string reply;  // read by the server's thread: it goes after the server
  LoopbackServer server;
};

TEST_F(CheckVersionTest, ANewerVersionSortsAfterThisBuildAsTextAndOddRepliesMeanNo) {
  build("1.0");
  EXPECT_TRUE(storeHas("1.1"));
  EXPECT_FALSE(storeHas("1.0"));
  build("1.9");
  EXPECT_FALSE(storeHas("1.10"));  // text order, not version order
  for (const char* odd : {R"({"results": []})", "garbage", "", R"([{"version": "9.9"}])"}) {
    reply = odd;
    EXPECT_FALSE(ads().onCheckVersion()) << odd;
  }

  // A server that never answers is given up at the lookup's time limit,
  // well before the default one.
  reply = "hang";
  ads().setStoreLookupTimeout(300);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(ads().onCheckVersion());
  EXPECT_LT(std::chrono::steady_clock::now() - start,
            std::chrono::milliseconds(AdmobViewController::kStoreLookupTimeoutMs / 2));
}

}  // namespace
