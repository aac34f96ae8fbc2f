#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ads/admob_view_controller.h"
#include "adsdk/house_ad_network.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/animator.h"
#include "kit/ui/mail_compose_sink.h"
#include "kit/ui/screen.h"
#include "kit/ui/window.h"

// Records what the ad controller tells its delegate.
class ControllerRecorder final : public AdmobViewControllerDelegate {
 public:
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

// One launch of the game as the ad controller sees it: fresh services on a
// preferences folder that outlives the launches, a window whose root view
// controller hosts the ads, the view animator, a deterministic house network
// on the bundled ads, and a controller made for this launch.
struct AdsLaunch {
  AdsLaunch(const std::filesystem::path& prefs, const LaunchSetup& setup, int64_t now)
      : platform(prefs, setup.resources),
        animator(platform.clock),
        previous(kit::Animator::setCurrent(&animator)) {
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
    controller.reset();
    network.reset();
    kit::Animator::setCurrent(previous);
  }

  kit::HeadlessPlatform platform;
  kit::Animator animator;
  kit::Animator* previous;
  kit::RecordingMailSink mail;
  std::shared_ptr<kit::Window> window;
  std::shared_ptr<kit::ViewController> root = std::make_shared<kit::ViewController>();
  std::shared_ptr<HouseAdNetwork> network;
  std::shared_ptr<AdmobViewController> controller;
};

class AdsTest : public ::testing::Test {
 protected:
  static constexpr int64_t kInstallTime = 1'700'000'000;

  AdsTest() { launchAt(0); }
  ~AdsTest() override {
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
  std::shared_ptr<kit::Window> window() { return launch_->window; }

  // Moves time on in 60 Hz frames: the run loop, then the animations.
  void advance(double seconds) {
    const auto frames = static_cast<int64_t>(std::llround(seconds * 60));
    for (int64_t i = 0; i < frames; ++i) {
      platform().clock.advance(kit::kNanosPerSecond / 60);
      platform().runLoop.runOnce();
      launch_->animator.tick();
    }
  }

  // Sets the wall clock (whole seconds since the install).
  void setTime(int64_t seconds) { platform().clock.setNow(kInstallTime + seconds); }
  int64_t now() { return platform().clock.now(); }

  // Closes the interstitial on screen and waits until the next one is loaded.
  void closeInterstitialAndReload() {
    auto shown = ads().interstitial_round;
    ASSERT_TRUE(shown && shown->isPresented());
    shown->close();
    advance(1);
  }

  std::string pref(const std::string& key) {
    const kit::Value* value = nullptr;
    auto it = platform().defaults.storedValues().find(key);
    if (it != platform().defaults.storedValues().end())
      value = &it->second;
    if (!value)
      return "<absent>";
    const std::string* text = value->ifString();
    return text ? *text : "<not text>";
  }

  kit::TempDir prefs;
  std::unique_ptr<AdsLaunch> launch_;
};
