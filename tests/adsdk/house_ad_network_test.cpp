#include "adsdk/adsdk_fixture.h"
#include "adsdk/loopback_server.h"

#include <thread>

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class HouseAdNetworkTest : public AdsdkTest {
 protected:
  // Asks for an ad; the answer lands in the returned slot.
  std::shared_ptr<std::optional<AdAnswer>> ask(AdFormat format, kit::Size size,
                                               const std::string& unit = kBannerUnit) {
    auto answer = std::make_shared<std::optional<AdAnswer>>();
    network->requestAd({format, unit, size, 1}, [answer](const AdAnswer& a) { *answer = a; });
    return answer;
  }
  // The error code and reason of the next banner request ("" when it does not fail).
  std::string failure(const std::string& unit = kBannerUnit) {
    auto answer = ask(AdFormat::Banner, {320, 50}, unit);
    advance(0.6);
    const auto error = answer->value_or(AdAnswer{}).error;
    return error ? std::to_string(int(error->code())) + " " + error->localizedFailureReason() : "";
  }
};

TEST_F(HouseAdNetworkTest, AnswersOnTheRunLoopAfterHalfASecondGoingRoundTheAdsOrRefusing) {
  auto first = ask(AdFormat::Banner, {320, 50});
  advance(0.45);
  EXPECT_FALSE(*first);
  advance(0.1);
  ASSERT_TRUE(*first && (*first)->creative);
  EXPECT_EQ((*first)->creative->name, "play-with-a-friend");
  for (const char* name : {"night-roads", "collect-every-coin", "play-with-a-friend"}) {
    auto answer = ask(AdFormat::Banner, {768, 90});
    advance(0.6);
    EXPECT_EQ((*answer)->creative->name, name);
  }

  EXPECT_THAT(failure("ca-app-pub-123/456"), StartsWith("0 "));  // an invalid request
  network->setAnswer(HouseAdNetwork::Answer::Fail);
  EXPECT_THAT(failure(), StartsWith("1 "));  // no fill
}

TEST_F(HouseAdNetworkTest, BrokenBundledAdsFailWithAReason) {
  const std::string entry =
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "n.svg", "width": 320, "height": 50}]})";
  useFolder("{ not json");
  EXPECT_THAT(failure(), HasSubstr("not JSON"));
  useFolder(R"({"interstitials": [)" + entry + "]}");
  EXPECT_THAT(failure(), HasSubstr("no house ad to show in a banner"));
  useFolder(R"({"banners": [)" + entry + "]}");
  EXPECT_THAT(failure(), HasSubstr("missing or too large: n.svg"));
  useFolder(R"({"banners": [)" + entry + "]}", "just text");
  EXPECT_THAT(failure(), HasSubstr("neither a PNG nor an SVG"));
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
    std::ofstream(ads.path() / "manifest.json")
        << R"({"banners": [{"name": "served", "url": "https://www.twinlanes.example/s",
                            "images": [{"file": "s.svg", "width": 320, "height": 50}]}]})";
    std::ofstream(ads.path() / "s.svg")
        << R"(<svg width="32" height="5"><rect width="32" height="5" fill="#1fbfae"/></svg>)";
    server.server.set_mount_point("/ads", ads.path().string());
    server.server.Get("/slow/manifest.json", [this](const auto&, auto&) { server.stall(); });
    server.start();
  }

  void serve(const std::string& path) { useNetwork("http://" + server.host() + path); }

  LoopbackServer server;
};

TEST_F(ServedAdsTest, FetchesTheManifestAndPicturesFromTheServerAndFailsWithoutOne) {
  serve("/ads/manifest.json");
  auto answer = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  ASSERT_TRUE(*answer && (*answer)->creative) << (*answer)->error->localizedFailureReason();
  EXPECT_EQ((*answer)->creative->name, "served");
  EXPECT_EQ((*answer)->creative->image->pixelAt(10, 10),
            (kit::Image::Pixel{0x1f, 0xbf, 0xae, 0xff}));

  serve("/nothing/here.json");
  EXPECT_THAT(failure(), ::testing::AllOf(StartsWith("3 "), HasSubstr("404")));  // a server error
  serve("/slow/manifest.json");
  EXPECT_THAT(failure(), StartsWith("2 "));  // a network error
}

TEST_F(ServedAdsTest, FramesGoOnWhileTheServerIsSlow) {
  const std::string url = "http://" + server.host() + "/slow/manifest.json";
  network = std::make_shared<HouseAdNetwork>(  // not deterministic
      platform.services(),
      HouseAdNetwork::Options{.serverURL = url, .bundledFolder = {}, .serverTimeoutMs = 400});
  ask(AdFormat::Banner, {320, 50});
  const auto start = std::chrono::steady_clock::now();
  advance(1);  // 60 frames
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(ServedAdsTest, QuittingDoesNotWaitForADownloadInFlight) {
  const std::string url = "http://" + server.host() + "/slow/manifest.json";
  network = std::make_shared<HouseAdNetwork>(
      platform.services(),
      HouseAdNetwork::Options{.serverURL = url, .bundledFolder = {}, .serverTimeoutMs = 5000});
  auto answer = ask(AdFormat::Banner, {320, 50});
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the worker is in the download
  const auto start = std::chrono::steady_clock::now();
  network.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
  advance(1);
  EXPECT_FALSE(*answer);  // the dropped load never answers
}

}  // namespace
