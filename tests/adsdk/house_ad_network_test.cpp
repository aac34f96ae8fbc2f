#include "adsdk/adsdk_fixture.h"
#include "adsdk/loopback_server.h"

#include <chrono>
#include <iterator>
#include <list>
#include <map>
#include <thread>
#include <utility>
#include <vector>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#endif
#endif

namespace {

// Whether LeakSanitizer finds memory nobody points to any more (never, in
// builds without it).
bool leaksFound() {
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
  return __lsan_do_recoverable_leak_check() != 0;
#endif
#endif
  return false;
}

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
    frameUntil(*answer);  // a live network's worker may take longer
    const auto error = answer->value_or(AdAnswer{}).error;
    return error ? std::to_string(int(error->code())) + " " + error->localizedFailureReason() : "";
  }

  // Frames until `answer` arrives, sleeping between them so downloads and
  // loads on the worker can land.
  void frameUntil(const std::optional<AdAnswer>& answer) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!answer && std::chrono::steady_clock::now() < end) {
      advance(1.0 / 60);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
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

TEST_F(HouseAdNetworkTest, PicturesAreDrawnWithTheServicesGraphicsBeforeAnyAreInstalled) {
  // The program asks for its first ads before its application installs the
  // graphics, and a picture may still be drawn after it has gone.
  kit::Graphics* installed = kit::Graphics::setCurrent(nullptr);
  auto answer = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  kit::Graphics::setCurrent(installed);
  ASSERT_TRUE(*answer && (*answer)->creative);
  ASSERT_TRUE((*answer)->creative->image);
  EXPECT_GT((*answer)->creative->image->pixelWidth(), 0);
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

// An SVG whose size the reader took for zero failed on the worker thread and
// left behind what the reader had parsed and the thread's error text (157
// bytes, exit code 1 under LeakSanitizer).
TEST_F(HouseAdNetworkTest, AnSvgFailingOnTheWorkerLeavesNothingBehindWhenItStops) {
  const std::string entry =
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "n.svg", "width": 320, "height": 50}]})";
  for (const char* svg :
       {R"(<svg width="1e-50" height="1e-50"></svg>)", R"(<svg width="50%" height="50%"></svg>)",
        R"(<svg width="1e-6em" height="1e-6em"></svg>)",
        R"(<svg viewBox="0 0 1e-50 1e-50"></svg>)"}) {
    useFolder(R"({"banners": [)" + entry + "]}", svg, /*deterministic=*/false);
    EXPECT_THAT(failure(), HasSubstr("n.svg: not a usable SVG")) << svg;
    network.reset();  // the worker ends
    EXPECT_FALSE(leaksFound()) << svg;
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

  // A network as a player's: downloads through the fetcher, answers as they come.
  void serveLive(const std::string& path) {
    network = std::make_shared<HouseAdNetwork>(
        platform.services(), HouseAdNetwork::Options{.serverURL = "http://" + server.host() + path,
                                                     .bundledAds = nullptr,
                                                     .serverTimeoutMs = 2000});
  }

  LoopbackServer server;
};

TEST_F(ServedAdsTest, FetchesTheManifestAndPicturesFromTheServer) {
  serve("/ads/manifest.json");
  auto answer = ask(AdFormat::Banner, {320, 50});
  advance(0.6);
  ASSERT_TRUE(*answer && (*answer)->creative) << (*answer)->error->localizedFailureReason();
  EXPECT_EQ((*answer)->creative->name, "served");
  EXPECT_EQ((*answer)->creative->image->pixelAt(10, 10),
            (kit::Image::Pixel{0x1f, 0xbf, 0xae, 0xff}));
}

TEST_F(ServedAdsTest, DownloadsAnswerOnceAndNoEarlierThanTheirDelay) {
  std::ofstream(ads.path() / "broken.json") << "{ not json";
  std::ofstream(ads.path() / "astray.json")
      << R"({"banners": [{"name": "a", "url": "https://x.example/",
                          "images": [{"file": "gone.svg", "width": 320, "height": 50}]}]})";
  serveLive("/ads/manifest.json");
  int answers = 0;
  std::optional<AdAnswer> answer;
  network->requestAd({AdFormat::Banner, kBannerUnit, {320, 50}, 1}, [&](const AdAnswer& a) {
    ++answers;
    answer = a;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));  // the downloads land early
  advance(0.45);
  EXPECT_FALSE(answer);
  frameUntil(answer);
  advance(1);
  EXPECT_EQ(answers, 1);
  ASSERT_TRUE(answer && answer->creative) << answer->error->localizedFailureReason();
  EXPECT_EQ(answer->creative->name, "served");
  EXPECT_EQ(answer->creative->image->pixelAt(10, 10), (kit::Image::Pixel{0x1f, 0xbf, 0xae, 0xff}));

  for (const auto& [path, reason] :
       std::vector<std::pair<std::string, std::string>>{{"/ads/broken.json", "not JSON"},
                                                        {"/ads/astray.json", "404"},
                                                        {"/nothing/here.json", "404"}}) {
    serveLive(path);
    std::optional<AdAnswer> failed;
    network->requestAd({AdFormat::Banner, kBannerUnit, {320, 50}, 1},
                       [&](const AdAnswer& a) { failed = a; });
    frameUntil(failed);
    ASSERT_TRUE(failed && failed->error) << path;
    EXPECT_THAT(failed->error->localizedFailureReason(), HasSubstr(reason)) << path;
  }
}

TEST_F(ServedAdsTest, AMissingManifestIsAServerErrorAndAStalledOneANetworkError) {
  serve("/nothing/here.json");
  EXPECT_THAT(failure(), ::testing::AllOf(StartsWith("3 "), HasSubstr("404")));  // a server error
  serve("/slow/manifest.json");
  EXPECT_THAT(failure(), StartsWith("2 "));  // a network error
}

TEST_F(ServedAdsTest, FramesGoOnWhileTheServerIsSlow) {
  // The server holds its answer until teardown and the request would wait far
  // longer: frames that waited for it would find the answer there (or hang).
  const std::string url = "http://" + server.host() + "/slow/manifest.json";
  network = std::make_shared<HouseAdNetwork>(  // not deterministic
      platform.services(),
      HouseAdNetwork::Options{.serverURL = url, .bundledAds = nullptr, .serverTimeoutMs = 60'000});
  auto answer = ask(AdFormat::Banner, {320, 50});
  advance(1);  // 60 frames on the manual clock
  EXPECT_FALSE(*answer);
}

TEST_F(ServedAdsTest, QuittingDoesNotWaitForADownloadInFlight) {
  const std::string url = "http://" + server.host() + "/slow/manifest.json";
  network = std::make_shared<HouseAdNetwork>(
      platform.services(),
      HouseAdNetwork::Options{.serverURL = url, .bundledAds = nullptr, .serverTimeoutMs = 5000});
  auto answer = ask(AdFormat::Banner, {320, 50});
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the worker is in the download
  const auto start = std::chrono::steady_clock::now();
  network.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
  advance(1);
  EXPECT_FALSE(*answer);  // the dropped load never answers
}

// Holds every download until the frames wait for one, then hands over the
// oldest or the newest held first; a fetcher that cannot wait (as the
// browser's) hands over nothing.
class HeldFetcher final : public kit::HttpFetcher {
 public:
  enum class Order { OldestFirst, NewestFirst, CannotWait };
  HeldFetcher(kit::RunLoop& runLoop, Order order, std::map<std::string, std::string> files)
      : runLoop_(runLoop), order_(order), files_(std::move(files)) {}

  std::unique_ptr<kit::HttpFetch> start(const kit::HttpRequest& request, Done done) override {
    held_.emplace_back(request.url, std::move(done));
    return std::make_unique<kit::HttpFetch>();
  }
  bool waitForAnswer(double) override {
    if (order_ == Order::CannotWait || held_.empty())
      return false;
    auto it = order_ == Order::NewestFirst ? std::prev(held_.end()) : held_.begin();
    kit::HttpResponse response;
    const auto file = files_.find(it->first.substr(it->first.rfind('/') + 1));
    response.ok = file != files_.end();
    response.status = response.ok ? 200 : 404;
    response.body = response.ok ? file->second : "";
    runLoop_.post([done = std::move(it->second), response] { done(response); });
    held_.erase(it);
    return true;
  }

 private:
  kit::RunLoop& runLoop_;
  Order order_;
  std::map<std::string, std::string> files_;
  std::list<std::pair<std::string, Done>> held_;
};

class HeldDownloadsTest : public HouseAdNetworkTest {
 protected:
  // A banner (due after the usual half second) and then a slow interstitial
  // (due sooner) from a deterministic network on the held fetcher: each
  // answer as "<frame> <creative or error code>".
  std::vector<std::string> play(HeldFetcher::Order order) {
    const std::string svg = R"(<svg width="4" height="4"><rect width="4" height="4"/></svg>)";
    HeldFetcher fetcher(platform.runLoop, order,
                        {{"manifest.json", R"({
                           "banners": [{"name": "b", "url": "https://x.example/b",
                             "images": [{"file": "b.svg", "width": 320, "height": 50}]}],
                           "interstitials": [{"name": "i", "url": "https://x.example/i",
                             "images": [{"file": "i.svg", "width": 320, "height": 568}]}]})"},
                         {"b.svg", svg},
                         {"i.svg", svg}});
    const kit::Services base = platform.services();
    const kit::Services services{base.clock,     base.runLoop, base.notifications, base.defaults,
                                 base.bundle,    base.log,     base.http,          fetcher,
                                 base.urlOpener, base.device,  base.random,        base.graphics};
    HouseAdNetwork::Options options;
    options.serverURL = "http://ads.example/ads/manifest.json";
    options.deterministic = true;
    network = std::make_shared<HouseAdNetwork>(services, options);
    std::vector<std::string> answers;
    int frame = 0;
    const auto record = [&](const AdAnswer& a) {
      answers.push_back(std::to_string(frame) + " " +
                        (a.creative ? a.creative->name : std::to_string(int(a.error->code()))));
    };
    network->requestAd({AdFormat::Banner, kBannerUnit, {320, 50}, 1}, record);
    network->setAnswer(HouseAdNetwork::Answer::Slow, 0.25);
    network->requestAd({AdFormat::Interstitial, kBannerUnit, {320, 568}, 1}, record);
    for (frame = 1; frame <= 40; ++frame)
      advance(1.0 / 60);
    network.reset();  // before the fetcher it borrows
    return answers;
  }
};

TEST_F(HeldDownloadsTest, DeterministicAnswersComeAtTheirDelayWhateverOrderDownloadsLandIn) {
  const std::vector<std::string> oldestFirst = play(HeldFetcher::Order::OldestFirst);
  EXPECT_THAT(oldestFirst, ::testing::ElementsAre("16 i", "31 b"));
  EXPECT_EQ(play(HeldFetcher::Order::NewestFirst), oldestFirst);
}

TEST_F(HeldDownloadsTest, AFetcherThatCannotWaitFailsEachDueRequestWithATimeoutAtItsTime) {
  const int timeout = int(GADErrorCode::Timeout);
  EXPECT_THAT(
      play(HeldFetcher::Order::CannotWait),
      ::testing::ElementsAre("16 " + std::to_string(timeout), "31 " + std::to_string(timeout)));
}

}  // namespace
