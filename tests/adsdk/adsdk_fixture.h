#pragma once

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>

#include "adsdk/gad_banner_view.h"
#include "adsdk/gad_interstitial.h"
#include "adsdk/house_ad_network.h"
#include "kit/backends/files/file_resource_store.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/animator.h"
#include "kit/ui/screen.h"
#include "kit/ui/window.h"

inline const std::string kBannerUnit = "ca-app-pub-1234567890123456/1234567890";

struct AdRecorder final : GADBannerViewDelegate, GADInterstitialDelegate {
  void adViewDidReceiveAd(GADBannerView&) override { events.push_back("banner ok"); }
  void adViewDidFailToReceiveAdWithError(GADBannerView&, const GADRequestError& e) override {
    events.push_back("banner failed " + std::to_string(static_cast<int>(e.code())));
  }
  void interstitialDidReceiveAd(GADInterstitial&) override { events.push_back("ready"); }
  void interstitialWillDismissScreen(GADInterstitial&) override { events.push_back("will"); }
  void interstitialDidDismissScreen(GADInterstitial&) override { events.push_back("did"); }
  std::vector<std::string> events;
};

// The SDK on headless services and a deterministic house network on the
// bundled ads (or on a folder or server the test names).
class AdsdkTest : public ::testing::Test {
 protected:
  AdsdkTest() {
    kit::Screen::main().setBounds({320, 568});
    kit::Screen::main().setScale(1);
    window->setRootViewController(root);
    useNetwork("");
  }
  ~AdsdkTest() override {
    kit::Animator::setCurrent(previous);
    kit::Screen::main().setScale(kit::Screen::kDefaultScale);
  }

  // A fresh deterministic network on the ad server at `url`, or else on
  // `bundled` (the bundle's ads when null); a live one (a player's, loading
  // on its worker) when asked.
  void useNetwork(const std::string& url, const kit::ResourceStore* bundled = nullptr,
                  bool deterministic = true) {
    HouseAdNetwork::Options options{.serverURL = url, .bundledAds = bundled};
    options.serverTimeoutMs = 500;
    options.deterministic = deterministic;
    network = std::make_shared<HouseAdNetwork>(platform.services(), options);
  }

  // A network on a folder holding `manifest` and, when given, n.svg.
  void useFolder(const std::string& manifest, const std::string& picture = "",
                 bool deterministic = true) {
    std::ofstream(ads.path() / "manifest.json") << manifest;
    if (!picture.empty())
      std::ofstream(ads.path() / "n.svg") << picture;
    useNetwork("", &adsFolder, deterministic);
  }

  std::shared_ptr<GADBannerView> banner() {
    auto view = std::make_shared<GADBannerView>(kit::Rect{{0, 0}, {320, 50}}, network);
    view->setAdUnitID(kBannerUnit);
    view->setDelegate(recorder);
    root->view()->addSubview(view);
    view->loadRequest(GADRequest::request());
    return view;
  }

  std::shared_ptr<GADInterstitial> interstitial() {
    auto ad = std::make_shared<GADInterstitial>(network);
    ad->setAdUnitID("ca-app-pub-1234567890123456/0987654321");
    ad->setDelegate(recorder);
    ad->loadRequest(GADRequest::request());
    return ad;
  }

  // Moves time on in 60 Hz frames, as the scenario runner does: the ads'
  // downloads due, the run loop, then the animations.
  void advance(double seconds) {
    for (int64_t i = 0; i < std::llround(seconds * 60); ++i) {
      platform.clock.advance(kit::kNanosPerSecond / 60);
      if (network)
        network->awaitDueAnswers();
      platform.runLoop.runOnce();
      animator.tick();
    }
  }

  kit::TempDir prefs;
  kit::TempDir ads;
  kit::FileResourceStore adsFolder{ads.path()};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  kit::Animator animator{platform.clock};
  kit::Animator* previous = kit::Animator::setCurrent(&animator);
  std::shared_ptr<kit::Window> window = std::make_shared<kit::Window>(kit::Size{320, 568});
  std::shared_ptr<kit::ViewController> root = std::make_shared<kit::ViewController>();
  std::shared_ptr<AdRecorder> recorder = std::make_shared<AdRecorder>();
  std::shared_ptr<HouseAdNetwork> network;
};
