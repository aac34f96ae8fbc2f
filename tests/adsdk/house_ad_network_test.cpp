#include <gmock/gmock.h>

#include "adsdk/adsdk_fixture.h"
#include "adsdk/loopback_server.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class HouseAdNetworkTest : public AdsdkTest {
 protected:
  // Asks for an ad and collects the answer.
  std::shared_ptr<std::optional<AdAnswer>> ask(AdFormat format, kit::Size size,
                                               const std::string& unit = kBannerUnit) {
    auto answer = std::make_shared<std::optional<AdAnswer>>();
    network->requestAd({format, unit, size, 1}, [answer](const AdAnswer& a) { *answer = a; });
    return answer;
  }
};

TEST_F(HouseAdNetworkTest, AnswersOnTheRunLoopAfterHalfASecond) {
  auto answer = ask(AdFormat::Banner, {320, 50});
  EXPECT_FALSE(*answer);  // never inside the call
  advance(0.45);
  EXPECT_FALSE(*answer);
  advance(0.1);
  ASSERT_TRUE(*answer);
  ASSERT_TRUE((*answer)->creative);
  EXPECT_EQ((*answer)->creative->name, "play-with-a-friend");
  EXPECT_EQ((*answer)->creative->image->size(), (kit::Size{320, 50}));
  EXPECT_EQ(network->pendingRequests(), 0u);
}

TEST_F(HouseAdNetworkTest, GoesRoundTheBundledAdsOfEachFormat) {
  std::vector<std::string> names;
  for (int i = 0; i < 4; ++i) {
    auto answer = ask(AdFormat::Banner, {768, 90});
    advance(0.6);
    ASSERT_TRUE(*answer && (*answer)->creative);
    names.push_back((*answer)->creative->name);
    // A leaderboard slot gets the wide picture, fitted to the slot's height.
    EXPECT_EQ((*answer)->creative->image->size().height, 90);
  }
  EXPECT_THAT(names, ElementsAre("play-with-a-friend", "night-roads", "collect-every-coin",
                                 "play-with-a-friend"));
  auto full = ask(AdFormat::Interstitial, {768, 1024});
  advance(0.6);
  ASSERT_TRUE(*full && (*full)->creative);
  EXPECT_EQ((*full)->creative->name, "twin-lanes-with-a-friend");
}

TEST_F(HouseAdNetworkTest, ScriptedAnswersFailOrComeLate) {
  network->setAnswer(HouseAdNetwork::Answer::Fail);
  auto failed = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  ASSERT_TRUE(*failed);
  ASSERT_TRUE((*failed)->error);
  EXPECT_EQ((*failed)->error->code(), GADErrorCode::NoFill);

  network->setAnswer(HouseAdNetwork::Answer::Slow, 3);
  auto slow = ask(AdFormat::Banner, {320, 50});
  advance(2.9);
  EXPECT_FALSE(*slow);
  advance(0.2);
  ASSERT_TRUE(*slow);
  EXPECT_TRUE((*slow)->creative);

  network->setAnswer(HouseAdNetwork::Answer::Fill);
  auto filled = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  EXPECT_TRUE(*filled && (*filled)->creative);
}

TEST_F(HouseAdNetworkTest, RefusesRequestsWithoutAUsableUnitOrSize) {
  auto noUnit = ask(AdFormat::Banner, {320, 50}, "");
  auto badUnit = ask(AdFormat::Banner, {320, 50}, "ca-app-pub-123/456");
  auto noSize = ask(AdFormat::Banner, {0, 0});
  advance(0.6);
  for (const auto& answer : {noUnit, badUnit, noSize}) {
    ASSERT_TRUE(*answer);
    ASSERT_TRUE((*answer)->error);
    EXPECT_EQ((*answer)->error->code(), GADErrorCode::InvalidRequest);
  }
}

TEST_F(HouseAdNetworkTest, BrokenBundledAdsFailWithAReason) {
  struct Case {
    std::string manifest;
    std::vector<std::pair<std::string, std::string>> files;
    std::string reason;
  };
  const std::string entry =
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "n.svg", "width": 320, "height": 50}]})";
  const std::vector<Case> cases = {
      {"{ not json", {}, "not JSON"},
      {R"({"interstitials": [)" + entry + "]}", {}, "no house ad to show in a banner"},
      {R"({"banners": [)" + entry + "]}", {}, "missing or too large: n.svg"},
      {R"({"banners": [)" + entry + "]}", {{"n.svg", "just text"}}, "neither a PNG nor an SVG"},
      {R"({"banners": [)" + entry + "]}", {{"n.svg", "<svg"}}, "not a usable SVG"},
  };
  for (const Case& c : cases) {
    useFolder(c.manifest, c.files);
    auto answer = ask(AdFormat::Banner, {320, 50});
    advance(0.6);
    ASSERT_TRUE(*answer) << c.reason;
    ASSERT_TRUE((*answer)->error) << c.reason;
    EXPECT_THAT((*answer)->error->localizedFailureReason(), HasSubstr(c.reason));
  }
}

TEST_F(HouseAdNetworkTest, AGoneNetworkDropsItsPendingAnswers) {
  auto answer = ask(AdFormat::Interstitial, {320, 568});
  network.reset();
  advance(1);
  EXPECT_FALSE(*answer);
}

class ServedAdsTest : public HouseAdNetworkTest {
 protected:
  void SetUp() override {
    server.server.Get("/ads/manifest.json", [](const httplib::Request&, httplib::Response& res) {
      res.set_content(
          R"({"banners": [{"name": "served", "url": "https://www.twinlanes.example/s",
                           "images": [{"file": "pics/s.svg", "width": 320, "height": 50}]}]})",
          "application/json");
    });
    server.server.Get("/ads/pics/s.svg", [](const httplib::Request&, httplib::Response& res) {
      res.set_content(svg(320, 50, "#1fbfae"), "image/svg+xml");
    });
    server.server.Get("/slow/manifest.json",
                      [this](const httplib::Request&, httplib::Response&) { server.stall(); });
    server.start();
  }

  void serve(const std::string& path) {
    HouseAdNetwork::Options options;
    options.serverURL = server.url(path);
    options.serverTimeoutMs = 500;
    useNetwork(options);
  }

  LoopbackServer server;
};

TEST_F(ServedAdsTest, FetchesTheManifestAndPicturesFromTheServer) {
  serve("/ads/manifest.json");
  auto answer = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  ASSERT_TRUE(*answer);
  ASSERT_TRUE((*answer)->creative) << (*answer)->error->localizedFailureReason();
  EXPECT_EQ((*answer)->creative->name, "served");
  EXPECT_EQ((*answer)->creative->image->pixelAt(10, 10),
            (kit::Image::Pixel{0x1f, 0xbf, 0xae, 0xff}));
}

TEST_F(ServedAdsTest, AMissingOrSilentServerIsAFailure) {
  serve("/nothing/here.json");
  auto missing = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  ASSERT_TRUE(*missing && (*missing)->error);
  EXPECT_EQ((*missing)->error->code(), GADErrorCode::ServerError);
  EXPECT_THAT((*missing)->error->localizedFailureReason(), HasSubstr("404"));

  serve("/slow/manifest.json");
  auto silent = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  ASSERT_TRUE(*silent && (*silent)->error);
  EXPECT_EQ((*silent)->error->code(), GADErrorCode::NetworkError);
}

TEST_F(ServedAdsTest, FramesGoOnWhileTheServerIsSlow) {
  HouseAdNetwork::Options options;
  options.serverURL = server.url("/slow/manifest.json");
  options.serverTimeoutMs = 400;
  network = std::make_shared<HouseAdNetwork>(platform.services(), options);  // not deterministic
  auto answer = ask(AdFormat::Banner, {320, 50});
  const auto start = std::chrono::steady_clock::now();
  advance(1);  // 60 frames
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
  for (int i = 0; i < 200 && !*answer; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    advance(1.0 / 60);
  }
  ASSERT_TRUE(*answer);
  EXPECT_TRUE((*answer)->error);
}

}  // namespace
