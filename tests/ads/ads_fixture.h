#pragma once

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>

#include "ads/admob_view_controller.h"
#include "adsdk/house_ad_network.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/animator.h"
#include "kit/ui/mail_compose_sink.h"
#include "kit/ui/screen.h"
#include "kit/ui/window.h"

struct ControllerRecorder final : AdmobViewControllerDelegate {
  void adMobVCDidReceiveInterstitialAd(AdmobViewController&) override { events.push_back("ready"); }
  void adMobVCWillCloseInterstitialAd(AdmobViewController&) override { events.push_back("will"); }
  void adMobVCDidCloseInterstitialAd(AdmobViewController&) override { events.push_back("did"); }
  std::vector<std::string> events;
};

// How a launch is set up: the device and how the house network answers.
struct LaunchSetup {
  kit::Device::Idiom idiom = kit::Device::Idiom::Phone;
  HouseAdNetwork::Answer answer = HouseAdNetwork::Answer::Fill;
  std::filesystem::path resources = TWINLANES_RESOURCES;
};

// One launch as the ad controller sees it: fresh services on preferences that
// outlive the launch, a window whose root view controller hosts the ads, the
// view animator, a deterministic house network and the launch's controller.
struct AdsLaunch {
  AdsLaunch(const std::filesystem::path& prefs, const LaunchSetup& setup, int64_t now)
      : platform(prefs, setup.resources), animator(platform.clock) {
    platform.clock.setNow(now);
    platform.device.userInterfaceIdiom = setup.idiom;
    const bool pad = setup.idiom == kit::Device::Idiom::Pad;
    kit::Screen::main().setBounds(pad ? kit::Size{768, 1024} : kit::Size{320, 568});
    kit::Screen::main().setScale(1);
    window = std::make_shared<kit::Window>(kit::Screen::main().bounds());
    window->setRootViewController(root);
    HouseAdNetwork::Options options;
    options.deterministic = true;
    network = std::make_shared<HouseAdNetwork>(platform.services(), options);
    network->setAnswer(setup.answer);
    controller = AdmobViewController::create({platform.services(), network, mail});
  }
  ~AdsLaunch() {
    controller.reset();  // before the network and the animator it uses
    network.reset();
    kit::Animator::setCurrent(previous);
  }

  kit::HeadlessPlatform platform;
  kit::Animator animator;
  kit::Animator* previous = kit::Animator::setCurrent(&animator);
  kit::RecordingMailSink mail;
  std::shared_ptr<kit::Window> window;
  std::shared_ptr<kit::ViewController> root = std::make_shared<kit::ViewController>();
  std::shared_ptr<HouseAdNetwork> network;
  std::shared_ptr<AdmobViewController> controller;
};

class AdmobViewControllerTest : public ::testing::Test {
 protected:
  static constexpr int64_t kInstallTime = 1'700'000'000;

  AdmobViewControllerTest() { launchAt(0); }
  ~AdmobViewControllerTest() override {
    launch_.reset();
    kit::Screen::main().setBounds(kit::Screen::kDefaultBounds);
    kit::Screen::main().setScale(kit::Screen::kDefaultScale);
  }

  // Ends the running launch and starts the next, `seconds` after the install.
  void launchAt(int64_t seconds, LaunchSetup setup = {}) {
    launch_.reset();
    launch_ = std::make_unique<AdsLaunch>(prefs.path(), setup, kInstallTime + seconds);
  }

  AdmobViewController& ads() { return *launch_->controller; }
  kit::HeadlessPlatform& platform() { return launch_->platform; }
  HouseAdNetwork& network() { return *launch_->network; }
  const std::shared_ptr<kit::ViewController>& root() { return launch_->root; }

  void advance(double seconds) {
    for (int64_t i = 0; i < std::llround(seconds * 60); ++i) {
      platform().clock.advance(kit::kNanosPerSecond / 60);
      platform().runLoop.runOnce();
      launch_->animator.tick();
    }
  }

  // Closes the interstitial on screen and waits until the next one is loaded.
  void closeInterstitialAndReload() {
    ASSERT_TRUE(ads().roundInterstitial() && ads().roundInterstitial()->isPresented());
    ads().roundInterstitial()->close();
    advance(1);
  }

  // A stored preference, which the controller writes as text.
  std::string pref(const std::string& key) {
    const kit::Value& value = platform().defaults.storedValues().at(key);
    return value.ifString() ? *value.ifString() : "<not text>";
  }

  kit::TempDir prefs;
  std::unique_ptr<AdsLaunch> launch_;
};
