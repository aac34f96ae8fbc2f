// The host as the application runs it (no window): what the view controller
// does when its view loads, the game-over counter and its interstitials, the
// actions, and the delegate's lifecycle forwarding.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "app/game_application.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/sprite_view.h"
#include "kit/scene/frame_driver.h"
#include "kit/ui/navigation_controller.h"
#include "kit/ui/window.h"
#include "names/notification_names.h"
#include "names/preference_keys.h"

namespace {

// Records what the host asks of the ad controller and its rating service.
class RecordingHostServices : public HostServices {
 public:
  void askRatingService(ViewController& controller) override { rated.push_back(&controller); }
  void placeBanner(float x, float posy, float width, float height,
                   const std::shared_ptr<kit::View>& view) override {
    banners.push_back({x, posy, width, height});
    bannerView = view;
  }
  void tryShowInterstitial(ViewController& controller, bool ignoreTimeInterval) override {
    interstitials.push_back(&controller);
    ignoredInterval = ignoreTimeInterval;
  }
  std::vector<ViewController*> rated;
  std::vector<std::vector<float>> banners;
  std::shared_ptr<kit::View> bannerView;
  std::vector<ViewController*> interstitials;
  bool ignoredInterval = false;
};

class HostTest : public ::testing::Test {
 protected:
  // Launches the game with whatever the preferences file holds by then.
  void launch(const std::string& profile = "phone") {
    GameApplication::Options options;
    options.application.window = false;
    options.application.profile = profile;
    options.seed = 3;
    game = std::make_unique<GameApplication>(options, host, platform.services());
    const kit::Status launched = game->launch();
    ASSERT_TRUE(launched) << launched.error();
  }
  void frames(int n) {
    for (int i = 0; i < n; ++i) {
      platform.clock.advance(kit::kNanosPerSecond / 60);
      game->application().runFrame();
    }
  }
  // The value of `key` in the preferences file as written so far.
  kit::Value written(const std::string& key) const {
    std::ifstream in(platform.defaults.store().location());
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const auto values = kit::UserDefaults::decode(bytes);
    if (!values || !values->count(key))
      return kit::Value();
    return values->at(key);
  }
  ViewController& controller() { return *game->viewController(); }

  kit::TempDir prefs{"twinlanes-host-test"};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  RecordingHostServices host;
  std::unique_ptr<GameApplication> game;
};

TEST_F(HostTest, LoadingTheViewPreparesTheLaunchAndPresentsTheScene) {
  platform.defaults.setInteger(5, prefkey::kCnt);
  platform.defaults.setBool(false, prefkey::kFirst);
  platform.defaults.setInteger(12, prefkey::kBest);
  launch();
  // The counters start afresh and are written at once; the best stays.
  EXPECT_EQ(platform.defaults.integerForKey(prefkey::kBest), 12);
  EXPECT_EQ(written("cnt").integerValue(), 0);
  EXPECT_TRUE(written("first").boolValue());
  // Defaults are registered, not written.
  EXPECT_EQ(platform.defaults.storedValues().count(prefkey::kSound), 0u);

  auto sprite = game->application().spriteView();
  ASSERT_TRUE(sprite && controller().gameScene);
  EXPECT_EQ(sprite->scene(), controller().gameScene);
  EXPECT_EQ(controller().gameScene->size(), (kit::Size{320, 568}));
  EXPECT_EQ(controller().gameScene->scaleMode(), kit::SceneScaleMode::AspectFill);

  // The rating service is asked once; the banner goes into the strip.
  EXPECT_EQ(host.rated, std::vector<ViewController*>{&controller()});
  ASSERT_EQ(host.banners.size(), 1u);
  EXPECT_EQ(host.banners[0], (std::vector<float>{0, 0, 320, 50}));
  EXPECT_EQ(host.bannerView, controller().adView());
  EXPECT_TRUE(host.interstitials.empty());
  // On a pad the scene and the banner strip are the pad's.
  launch("pad");
  EXPECT_EQ(controller().gameScene->size(), (kit::Size{768, 1024}));
  EXPECT_EQ(host.banners.back(), (std::vector<float>{0, 0, 768, 90}));
}

TEST_F(HostTest, EverySecondGameOverOfALaunchTriesAnInterstitial) {
  launch();
  for (int i = 1; i <= 5; ++i) {
    platform.notifications.postNotificationName(notification::kShowAd);
    EXPECT_EQ(platform.defaults.integerForKey(prefkey::kCnt), i);
    EXPECT_EQ(host.interstitials.size(), static_cast<size_t>(i / 2)) << "after game over " << i;
  }
  EXPECT_TRUE(host.ignoredInterval);
  EXPECT_EQ(written("cnt").integerValue(), 5);
}

TEST_F(HostTest, TheSoundActionFlipsThePreferenceAndLeavesTheSceneAlone) {
  launch();
  controller().onSound(nullptr);
  EXPECT_EQ(written("sound"), kit::Value(false));
  EXPECT_TRUE(controller().gameScene->soundFlag());
}

TEST_F(HostTest, TheSoundNotificationShareAndAgainDoNothing) {
  launch();
  platform.notifications.postNotificationName(notification::kSoundChange, kit::Value(false));
  controller().onShare(nullptr);
  controller().onAgain(nullptr);
  EXPECT_TRUE(platform.urlOpener.opened.empty());
  EXPECT_EQ(platform.defaults.integerForKey(prefkey::kCnt), 0);
  EXPECT_TRUE(controller().gameScene->soundFlag());
}

TEST_F(HostTest, RateAppOpensTheStorePage) {
  launch();
  controller().rateApp(nullptr);
  EXPECT_EQ(platform.urlOpener.opened,
            std::vector<std::string>{"itms-apps://apps.twinlanes.example/app/id1234567890"});
}

TEST_F(HostTest, GoingToTheBackgroundAndBackNeitherPausesNorRestartsTheRun) {
  launch();
  game->application().frameDriver().touchesBegan({*game->primaryButton()});
  frames(90);
  const auto scene = controller().gameScene;
  ASSERT_TRUE(scene->startFlag());
  const double lineY = scene->leftLineNode().position().y;
  game->application().windowVisibilityChanged(false);
  frames(2);
  game->application().windowVisibilityChanged(true);
  frames(10);
  EXPECT_TRUE(scene->startFlag() || scene->overFlag());
  EXPECT_NE(scene->leftLineNode().position().y, lineY);  // still scrolling
  EXPECT_EQ(controller().gameScene, scene);
}

// Records the appearance calls the delegate forwards.
class ProbeController : public kit::ViewController {
 public:
  void viewWillAppear(bool animated) override { calls += animated ? "A" : "a"; }
  void viewWillDisappear(bool animated) override { calls += animated ? "D" : "d"; }
  std::string calls;
};

TEST_F(HostTest, TheDelegateForwardsBackgroundAndForegroundToTheTopController) {
  launch();
  auto probe = std::make_shared<ProbeController>();
  auto window = std::make_shared<kit::Window>(kit::Size{320, 618});
  window->setRootViewController(std::make_shared<kit::NavigationController>(probe));
  probe->calls.clear();
  AppDelegate delegate;
  delegate.setWindow(window);
  kit::Application& app = game->application();
  EXPECT_TRUE(delegate.applicationDidFinishLaunchingWithOptions(app, {}));
  delegate.applicationDidEnterBackground(app);
  delegate.applicationWillEnterForeground(app);
  EXPECT_EQ(probe->calls, "DA");  // animated, as the platform does
}

}  // namespace
