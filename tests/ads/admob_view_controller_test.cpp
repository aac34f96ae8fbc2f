#include <atomic>
#include <set>
#include <thread>

#include "ads/ads_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using AdmobViewControllerTest = AdsTest;

TEST_F(AdmobViewControllerTest, InitSetsThePhoneOrPadBannerSizeAndTheScreen) {
  EXPECT_EQ(ads().adWeight, 320);
  EXPECT_EQ(ads().adHeight, 50);
  EXPECT_EQ(ads().widthScreen, 320);
  EXPECT_EQ(ads().heightScreen, 568);
  EXPECT_EQ(ads().scaleScreen, 1.0f);  // the test screen's scale is 1
  EXPECT_EQ(ads().app_id, 1234567890);
  EXPECT_EQ(ads().supportMail, "support@twinlanes.example");
  EXPECT_EQ(ads().view()->backgroundColor(),
            (kit::Color{235 / 255.0, 235 / 255.0, 235 / 255.0, 1}));
  EXPECT_FALSE(ads().bInApp);
  EXPECT_FALSE(ads().adBanner);
  ASSERT_TRUE(ads().rtService());

  launchAt(10, {.idiom = kit::Device::Idiom::Pad});
  EXPECT_EQ(ads().adWeight, 768);
  EXPECT_EQ(ads().adHeight, 90);
  EXPECT_EQ(ads().widthScreen, 768);
}

TEST_F(AdmobViewControllerTest, TheFirstPlacementFixesTheBannerSizeAndLaterOnesMoveIt) {
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 518}, {320, 50}});
  ads().show_admob_banner(0, 0, 300, 40, host);
  auto banner = ads().adBanner;
  ASSERT_TRUE(banner);
  EXPECT_EQ(banner->superview(), host);
  EXPECT_EQ(banner->frame(), (kit::Rect{{0, 0}, {300, 40}}));
  EXPECT_EQ(banner->adUnitID(), "ca-app-pub-1234567890123456/1234567890");
  EXPECT_EQ(ads().adWeight, 300);
  EXPECT_EQ(ads().adHeight, 40);

  ads().show_admob_banner(10, 5, 200, 30, host);
  EXPECT_EQ(ads().adBanner, banner);
  EXPECT_EQ(banner->frame(), (kit::Rect{{10, 5}, {200, 30}}));
  EXPECT_EQ(ads().adWeight, 300);  // only the first placement stores the size

  advance(0.6);
  ASSERT_TRUE(banner->creative());
  // Drawn for the size it was asked with: the wide picture suits 300 × 40 best.
  EXPECT_EQ(banner->creative()->image->size(), (kit::Size{300, 37}));
  EXPECT_TRUE(platform().log.contains("Load banner ok!"));
}

TEST_F(AdmobViewControllerTest, ACentredBannerNeverStartsAtANegativeOrigin) {
  auto wide = std::make_shared<kit::View>(kit::Rect{{0, 0}, {400, 100}});
  ads().show_admob_banner(wide);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{40, 25}, {320, 50}}));

  auto narrow = std::make_shared<kit::View>(kit::Rect{{0, 0}, {300, 30}});
  ads().show_admob_banner(narrow);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{0, 0}, {320, 50}}));
  EXPECT_EQ(ads().adBanner->superview(), narrow);

  ads().show_admob_banner(nullptr);  // no view: placed at the origin, shown nowhere
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{0, 0}, {320, 50}}));
}

TEST_F(AdmobViewControllerTest, AFailedBannerIsLoggedAndStaysInPlace) {
  network().setAnswer(HouseAdNetwork::Answer::Fail);
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 0}, {320, 50}});
  ads().show_admob_banner(0, 0, 320, 50, host);
  advance(0.6);
  EXPECT_TRUE(platform().log.contains(
      "Failed to receive banner with error: Request Error: No ad to show."));
  EXPECT_EQ(ads().adBanner->superview(), host);
  EXPECT_FALSE(ads().adBanner->creative());
}

TEST_F(AdmobViewControllerTest, InterstitialsAreSpacedByAtLeast31Seconds) {
  advance(0.6);
  EXPECT_TRUE(platform().log.contains("round ad ready, wait to show!"));
  ASSERT_TRUE(ads().admob_interstial_ready());
  // The first one after launch passes: nothing was shown yet.
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), false));
  const long shownAt = ads().lastShowInerstitialAd;
  EXPECT_EQ(shownAt, now());
  closeInterstitialAndReload();
  ASSERT_TRUE(ads().admob_interstial_ready());

  platform().clock.setNow(shownAt + 30);
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), false));
  EXPECT_EQ(ads().lastShowInerstitialAd, shownAt);
  platform().clock.setNow(shownAt + 31);
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), false));
  EXPECT_EQ(ads().lastShowInerstitialAd, shownAt + 31);
  EXPECT_EQ(network().impressions(AdFormat::Interstitial), 2);
}

TEST_F(AdmobViewControllerTest, IgnoringTheSpacingShowsWheneverOneIsReady) {
  advance(0.6);
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), true));
  closeInterstitialAndReload();
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), true));
  EXPECT_EQ(network().impressions(AdFormat::Interstitial), 2);
}

TEST_F(AdmobViewControllerTest, NothingLoadedMeansNoAndNoTimeStamp) {
  EXPECT_FALSE(ads().admob_interstial_ready());  // still loading
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), true));
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), false));
  EXPECT_EQ(ads().lastShowInerstitialAd, 0);
  ads().show_admob_interstitial(root());
  EXPECT_EQ(ads().lastShowInerstitialAd, 0);
  EXPECT_FALSE(root()->presentedViewController());
}

TEST_F(AdmobViewControllerTest, TheUncheckedVariantShowsWithoutSpacing) {
  advance(0.6);
  ads().show_admob_interstitial(root());
  EXPECT_EQ(ads().lastShowInerstitialAd, now());
  closeInterstitialAndReload();
  ads().show_admob_interstitial(root());
  EXPECT_TRUE(ads().interstitial_round->isPresented());
}

TEST_F(AdmobViewControllerTest, EachDismissalLoadsAFreshInterstitialAndTellsTheDelegate) {
  auto recorder = std::make_shared<ControllerRecorder>();
  ads().setDelegate(recorder);
  advance(0.6);
  auto first = ads().interstitial_round;
  ASSERT_TRUE(ads().try_show_admob_interstitial(root(), true));
  EXPECT_FALSE(ads().admob_interstial_ready());
  first->close();
  advance(0.4);  // the screen slides away, then the next one is asked for
  EXPECT_NE(ads().interstitial_round, first);
  EXPECT_FALSE(ads().admob_interstial_ready());
  advance(0.6);
  EXPECT_TRUE(ads().admob_interstial_ready());
  EXPECT_THAT(recorder->events, ElementsAre("ready", "will", "did", "ready"));
  EXPECT_EQ(ads().interstitial_round->creative()->name, "night-roads");
}

TEST_F(AdmobViewControllerTest, AFailedInterstitialLoadStopsInterstitialsUntilTheNextLaunch) {
  launchAt(100, {.answer = HouseAdNetwork::Answer::Fail});
  advance(0.6);
  network().setAnswer(HouseAdNetwork::Answer::Fill);
  advance(120);
  setTime(100 + 3600);
  EXPECT_FALSE(ads().admob_interstial_ready());
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), true));
  EXPECT_EQ(network().pendingRequests(), 0u);  // nobody asked again

  launchAt(7200);
  advance(0.6);
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), true));
}

TEST_F(AdmobViewControllerTest, RemovingBannersTakesEveryBannerViewButKeepsTheControllers) {
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 0}, {320, 100}});
  auto other = std::make_shared<kit::View>();
  host->addSubview(other);
  ads().show_admob_banner(0, 0, 320, 50, host);
  host->addSubview(std::make_shared<GADBannerView>(kit::Rect{}, std::weak_ptr<AdNetwork>()));
  ads().remove_banner(host);
  ASSERT_THAT(host->subviews(), ElementsAre(other));
  ASSERT_TRUE(ads().adBanner);
  ads().show_admob_banner(0, 50, host);
  EXPECT_EQ(ads().adBanner->superview(), host);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{0, 50}, {320, 50}}));
}

TEST_F(AdmobViewControllerTest, AfterRemovingAllAdsNoCallbackArrives) {
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 0}, {320, 50}});
  ads().show_admob_banner(0, 0, 320, 50, host);
  ads().remove_all_ads(host);
  advance(0.6);
  EXPECT_TRUE(host->subviews().empty());
  EXPECT_FALSE(platform().log.contains("Load banner ok!"));
  EXPECT_FALSE(platform().log.contains("round ad ready"));
  // The loaded ad can still be shown, but none follows it.
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), true));
  auto shown = ads().interstitial_round;
  shown->close();
  advance(2);
  EXPECT_EQ(ads().interstitial_round, shown);
  EXPECT_FALSE(ads().admob_interstial_ready());
}

TEST_F(AdmobViewControllerTest, TheSharedControllerIsMadeOnceForEveryThread) {
  kit::RecordingMailSink mail;
  AdmobViewController::setSharedEnvironment({platform().services(), launch_->network, mail});
  std::vector<std::thread> threads;
  std::vector<std::shared_ptr<AdmobViewController>> seen(4);
  for (size_t i = 0; i < seen.size(); ++i)
    threads.emplace_back([&seen, i] { seen[i] = AdmobViewController::shareAdmobVC(); });
  for (auto& t : threads)
    t.join();
  ASSERT_TRUE(seen[0]);
  for (const auto& controller : seen)
    EXPECT_EQ(controller, seen[0]);
  EXPECT_EQ(AdmobViewController::shareAdmobVC(), seen[0]);
  EXPECT_EQ(pref("app-open-times"), "2");  // this launch's own controller, then the shared one

  auto fresh = AdmobViewController::relaunchShared({platform().services(), launch_->network, mail});
  EXPECT_NE(fresh, seen[0]);
  EXPECT_EQ(AdmobViewController::shareAdmobVC(), fresh);
  EXPECT_EQ(fresh->openTimes, 3);

  AdmobViewController::releaseShared();
  EXPECT_FALSE(AdmobViewController::shareAdmobVC());
}

}  // namespace
