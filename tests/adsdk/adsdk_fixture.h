#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adsdk/gad_banner_view.h"
#include "adsdk/gad_interstitial.h"
#include "adsdk/house_ad_network.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/animator.h"
#include "kit/ui/screen.h"
#include "kit/ui/window.h"

inline const std::string kBannerUnit = "ca-app-pub-1234567890123456/1234567890";
inline const std::string kInterstitialUnit = "ca-app-pub-1234567890123456/0987654321";

// Records what a banner or an interstitial tells its delegate.
class AdRecorder final : public GADBannerViewDelegate, public GADInterstitialDelegate {
 public:
  void adViewDidReceiveAd(GADBannerView&) override { events.push_back("banner ok"); }
  void adViewDidFailToReceiveAdWithError(GADBannerView&, const GADRequestError& error) override {
    events.push_back("banner failed");
    lastError = error;
  }
  void interstitialDidReceiveAd(GADInterstitial&) override { events.push_back("ready"); }
  void interstitialWillDismissScreen(GADInterstitial&) override { events.push_back("will"); }
  void interstitialDidDismissScreen(GADInterstitial&) override { events.push_back("did"); }

  std::vector<std::string> events;
  std::optional<GADRequestError> lastError;
};

// The SDK on headless services: a manual clock, a window with a root view
// controller, the view animator, and a deterministic house network on the
// bundled ads (or on a folder or server the test names). Time moves in
// frames of 1/60 s, running the run loop and the animations.
class AdsdkTest : public ::testing::Test {
 protected:
  AdsdkTest()
      : platform(prefs.path(), TWINLANES_RESOURCES),
        animator(platform.clock),
        previous(kit::Animator::setCurrent(&animator)) {
    kit::Screen::main().setBounds({320, 568});
    kit::Screen::main().setScale(1);
    window->setRootViewController(root);
    useNetwork({});
  }
  ~AdsdkTest() override {
    kit::Animator::setCurrent(previous);
    kit::Screen::main().setScale(kit::Screen::kDefaultScale);
  }

  // A fresh network with these options (always deterministic).
  void useNetwork(HouseAdNetwork::Options options) {
    options.deterministic = true;
    network = std::make_shared<HouseAdNetwork>(platform.services(), std::move(options));
  }

  // A network on a folder holding `manifest` and the named files.
  void useFolder(const std::string& manifest,
                 const std::vector<std::pair<std::string, std::string>>& files = {}) {
    std::ofstream(ads.path() / "manifest.json") << manifest;
    for (const auto& [name, bytes] : files)
      std::ofstream(ads.path() / name, std::ios::binary) << bytes;
    HouseAdNetwork::Options options;
    options.bundledFolder = ads.path();
    useNetwork(options);
  }

  std::shared_ptr<GADBannerView> banner(kit::Size size = {320, 50}) {
    auto view = std::make_shared<GADBannerView>(kit::Rect{{0, 0}, size}, network);
    view->setAdUnitID(kBannerUnit);
    view->setDelegate(recorder);
    root->view()->addSubview(view);
    return view;
  }

  std::shared_ptr<GADInterstitial> interstitial() {
    auto ad = std::make_shared<GADInterstitial>(network);
    ad->setAdUnitID(kInterstitialUnit);
    ad->setDelegate(recorder);
    return ad;
  }

  void advance(double seconds) {
    const auto frames = static_cast<int64_t>(std::llround(seconds * 60));
    for (int64_t i = 0; i < frames; ++i) {
      platform.clock.advance(kit::kNanosPerSecond / 60);
      platform.runLoop.runOnce();
      animator.tick();
    }
  }

  static std::string svg(int width, int height, const std::string& fill = "#ffc93c") {
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + std::to_string(width) +
           "\" height=\"" + std::to_string(height) + "\"><rect width=\"" + std::to_string(width) +
           "\" height=\"" + std::to_string(height) + "\" fill=\"" + fill + "\"/></svg>";
  }

  kit::TempDir prefs;
  kit::TempDir ads;
  kit::HeadlessPlatform platform;
  kit::Animator animator;
  kit::Animator* previous;
  std::shared_ptr<kit::Window> window = std::make_shared<kit::Window>(kit::Size{320, 568});
  std::shared_ptr<kit::ViewController> root = std::make_shared<kit::ViewController>();
  std::shared_ptr<AdRecorder> recorder = std::make_shared<AdRecorder>();
  std::shared_ptr<HouseAdNetwork> network;
};
