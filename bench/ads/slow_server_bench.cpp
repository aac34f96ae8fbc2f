// The cost of 60 frames of the main run loop while a banner request waits on
// an ad server that holds its answer for 20 s, against 60 frames with no
// request pending, in the same run. The network asks from its worker, so the
// frames pay only for the pending answer's timer, never for the wait.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "adsdk/house_ad_network.h"
#include "adsdk/loopback_server.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"

namespace {

constexpr const char* kBannerUnit = "ca-app-pub-1234567890123456/1234567890";

struct Frames {
  kit::TempDir prefs{"ads-bench"};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};

  void run60() {
    for (int i = 0; i < 60; ++i) {
      platform.clock.advance(kit::kNanosPerSecond / 60);
      platform.runLoop.runOnce();
    }
  }
};

void BM_SixtyFramesWithNoRequest(benchmark::State& state) {
  Frames frames;
  auto network =
      std::make_shared<HouseAdNetwork>(frames.platform.services(), HouseAdNetwork::Options{});
  for (auto _ : state)
    frames.run60();
}

void BM_SixtyFramesWhileTheServerIsSlow(benchmark::State& state) {
  auto server = std::make_unique<LoopbackServer>();
  LoopbackServer* stalling = server.get();
  server->server.Get("/slow/manifest.json", [stalling](const auto&, auto&) { stalling->stall(); });
  server->start();
  Frames frames;
  auto network = std::make_shared<HouseAdNetwork>(
      frames.platform.services(),
      HouseAdNetwork::Options{.serverURL = "http://" + server->host() + "/slow/manifest.json",
                              .bundledAds = nullptr,
                              .serverTimeoutMs = 60'000});
  bool answered = false;
  network->requestAd({AdFormat::Banner, kBannerUnit, {320, 50}, 1},
                     [&answered](const AdAnswer&) { answered = true; });
  for (auto _ : state)
    frames.run60();
  if (answered)
    state.SkipWithError("the slow server answered during the frames");
  server.reset();  // lets the stalled answer go, so the network's worker can finish
}

BENCHMARK(BM_SixtyFramesWithNoRequest)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SixtyFramesWhileTheServerIsSlow)->Unit(benchmark::kMicrosecond);

}  // namespace
