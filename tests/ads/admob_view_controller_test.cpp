#include <thread>

#include "ads/ads_fixture.h"

namespace {

using ::testing::ElementsAre;

TEST_F(AdmobViewControllerTest, BannerSizeIsThePhoneOrPadDefaultUntilTheFirstPlacementFixesIt) {
  EXPECT_EQ(ads().adWeight, 320);
  EXPECT_EQ(ads().adHeight, 50);
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 518}, {320, 50}});
  ads().show_admob_banner(0, 0, 300, 40, host);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{0, 0}, {300, 40}}));
  ads().show_admob_banner(10, 5, 200, 30, host);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{10, 5}, {200, 30}}));
  EXPECT_EQ(ads().adWeight, 300);  // only the first placement stores the size
  EXPECT_EQ(ads().adHeight, 40);

  launchAt(10, {.idiom = kit::Device::Idiom::Pad});
  EXPECT_EQ(ads().adWeight, 768);
  EXPECT_EQ(ads().adHeight, 90);
}

TEST_F(AdmobViewControllerTest, ACentredBannerNeverStartsAtANegativeOrigin) {
  auto wide = std::make_shared<kit::View>(kit::Rect{{0, 0}, {400, 100}});
  ads().show_admob_banner(wide);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{40, 25}, {320, 50}}));
  auto narrow = std::make_shared<kit::View>(kit::Rect{{0, 0}, {300, 30}});
  ads().show_admob_banner(narrow);
  EXPECT_EQ(ads().adBanner->frame(), (kit::Rect{{0, 0}, {320, 50}}));
  EXPECT_EQ(ads().adBanner->superview(), narrow);
}

TEST_F(AdmobViewControllerTest, InterstitialsAreSpacedByAtLeast31SecondsUnlessIgnored) {
  auto recorder = std::make_shared<ControllerRecorder>();
  ads().setDelegate(recorder);
  advance(0.6);
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), false)) << "nothing shown yet";
  const long shownAt = ads().lastShowInerstitialAd;
  EXPECT_EQ(shownAt, platform().clock.now());
  closeInterstitialAndReload();
  platform().clock.setNow(shownAt + 30);
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), false));
  EXPECT_EQ(ads().lastShowInerstitialAd, shownAt);
  platform().clock.setNow(shownAt + 31);
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), false));
  EXPECT_EQ(ads().lastShowInerstitialAd, shownAt + 31);
  closeInterstitialAndReload();
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), true));
  closeInterstitialAndReload();
  ads().show_admob_interstitial(root());  // unchecked
  EXPECT_EQ(network().impressions(AdFormat::Interstitial), 4);
  // Each dismissal loads a fresh one.
  EXPECT_THAT(recorder->events, ElementsAre("ready", "will", "did", "ready", "will", "did", "ready",
                                            "will", "did", "ready"));
}

TEST_F(AdmobViewControllerTest, NothingLoadedYetMeansNoAndNoTimeStamp) {
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), true));
  ads().show_admob_interstitial(root());
  EXPECT_EQ(ads().lastShowInerstitialAd, 0);
  EXPECT_FALSE(root()->presentedViewController());
}

TEST_F(AdmobViewControllerTest, AFailedInterstitialLoadStopsInterstitialsUntilTheNextLaunch) {
  launchAt(100, {.answer = HouseAdNetwork::Answer::Fail});
  advance(0.6);
  network().setAnswer(HouseAdNetwork::Answer::Fill);
  advance(120);
  platform().clock.setNow(kInstallTime + 3700);
  EXPECT_FALSE(ads().try_show_admob_interstitial(root(), true));
  EXPECT_EQ(network().pendingRequests(), 0u);  // nobody asked again
  launchAt(7200);
  advance(0.6);
  EXPECT_TRUE(ads().try_show_admob_interstitial(root(), true));
}

TEST_F(AdmobViewControllerTest, RemovingAllAdsTakesTheBannerViewAndStopsCallbacks) {
  auto host = std::make_shared<kit::View>(kit::Rect{{0, 0}, {320, 100}});
  auto other = std::make_shared<kit::View>();
  host->addSubview(other);
  ads().show_admob_banner(0, 0, 320, 50, host);
  ads().remove_all_ads(host);
  advance(0.6);
  EXPECT_THAT(host->subviews(), ElementsAre(other));
  EXPECT_FALSE(platform().log.contains("Load banner ok!"));
  EXPECT_FALSE(platform().log.contains("round ad ready"));
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
  EXPECT_TRUE(seen[0]);
  EXPECT_THAT(seen, ::testing::Each(seen[0]));
  EXPECT_EQ(pref("app-open-times"), "2");  // this launch's own controller, then the shared one
}

TEST_F(AdmobViewControllerTest, TheSharedControllerIsMadeAgainAfterItWasReleased) {
  kit::RecordingMailSink mail;
  AdmobViewController::setSharedEnvironment({platform().services(), launch_->network, mail});
  const auto first = AdmobViewController::shareAdmobVC();
  ASSERT_TRUE(first);
  AdmobViewController::releaseShared();
  EXPECT_FALSE(AdmobViewController::shareAdmobVC());
  // A second game in the same process (another test, a relaunch) gets its own.
  AdmobViewController::setSharedEnvironment({platform().services(), launch_->network, mail});
  const auto second = AdmobViewController::shareAdmobVC();
  EXPECT_TRUE(second);
  EXPECT_NE(second, first);
  AdmobViewController::releaseShared();
}

}  // namespace
