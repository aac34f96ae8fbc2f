#include <gmock/gmock.h>

#include "adsdk/adsdk_fixture.h"
#include "adsdk/interstitial_ad_view_controller.h"
#include "kit/ui/key_receiver.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AdViewsTest : public AdsdkTest {
 protected:
  // The first view of class T among `view`'s subviews.
  template <class T>
  static std::shared_ptr<T> child(const std::shared_ptr<kit::View>& view) {
    for (const auto& sub : view->subviews())
      if (auto typed = std::dynamic_pointer_cast<T>(sub))
        return typed;
    return nullptr;
  }

  static void tap(kit::View& view) {
    const kit::Point middle{view.bounds().size.width / 2, view.bounds().size.height / 2};
    dynamic_cast<kit::TouchReceiver&>(view).touchesBegan({middle});
  }
};

TEST_F(AdViewsTest, ABannerShowsItsAdFittedAndOpensItsPageWhenTapped) {
  auto view = banner({320, 50});
  view->loadRequest(GADRequest::request());
  EXPECT_TRUE(view->isLoading());
  EXPECT_FALSE(child<kit::ImageView>(view));
  advance(0.6);
  EXPECT_THAT(recorder->events, ElementsAre("banner ok"));
  ASSERT_TRUE(view->creative());
  auto image = child<kit::ImageView>(view);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->frame(), view->bounds());
  EXPECT_EQ(image->contentMode(), kit::ContentMode::ScaleAspectFit);
  EXPECT_EQ(network->impressions(AdFormat::Banner), 1);

  // The picture follows the banner's frame.
  view->setFrame({{0, 0}, {768, 90}});
  EXPECT_EQ(image->frame().size, (kit::Size{768, 90}));

  tap(*view);
  EXPECT_THAT(platform.urlOpener.opened,
              ElementsAre("https://www.twinlanes.example/with-a-friend"));
  EXPECT_EQ(network->clicks(), 1);
}

TEST_F(AdViewsTest, AFailedRequestLeavesTheBannerAsItWas) {
  auto view = banner();
  view->loadRequest(GADRequest::request());
  advance(0.6);
  const std::string shown = view->creative()->name;
  network->setAnswer(HouseAdNetwork::Answer::Fail);
  view->loadRequest(GADRequest::request());
  advance(0.6);
  EXPECT_THAT(recorder->events, ElementsAre("banner ok", "banner failed"));
  ASSERT_TRUE(recorder->lastError);
  EXPECT_EQ(recorder->lastError->code(), GADErrorCode::NoFill);
  ASSERT_TRUE(view->creative());
  EXPECT_EQ(view->creative()->name, shown);
  EXPECT_FALSE(view->isLoading());
}

TEST_F(AdViewsTest, ANewerBannerRequestSupersedesOneInFlight) {
  auto view = banner();
  network->setAnswer(HouseAdNetwork::Answer::Slow, 2);
  view->loadRequest(GADRequest::request());
  network->setAnswer(HouseAdNetwork::Answer::Fill);
  view->loadRequest(GADRequest::request());
  advance(3);
  EXPECT_THAT(recorder->events, ElementsAre("banner ok"));
  EXPECT_EQ(view->creative()->name, "night-roads");  // the second of the round
}

TEST_F(AdViewsTest, AnInterstitialIsShownOnceOverTheWindowUntilClosed) {
  auto ad = interstitial();
  EXPECT_FALSE(ad->isReady());
  ad->loadRequest(GADRequest::request());
  advance(0.6);
  EXPECT_THAT(recorder->events, ElementsAre("ready"));
  ASSERT_TRUE(ad->isReady());

  ad->presentFromRootViewController(root);
  EXPECT_FALSE(ad->isReady());
  EXPECT_TRUE(ad->isPresented());
  EXPECT_EQ(network->impressions(AdFormat::Interstitial), 1);
  advance(0.5);
  auto screen = ad->screen();
  ASSERT_TRUE(screen);
  EXPECT_EQ(screen->view()->superview(), window);
  EXPECT_EQ(screen->view()->frame(), window->bounds());
  // The close button sits in the top right corner.
  const kit::Rect close = screen->closeButton()->frame();
  EXPECT_EQ(close.maxX(), 320 - InterstitialAdViewController::kMargin);
  EXPECT_EQ(close.minY(), InterstitialAdViewController::kMargin);

  tap(*screen->closeButton());
  EXPECT_THAT(recorder->events, ElementsAre("ready", "will"));
  advance(0.5);
  EXPECT_THAT(recorder->events, ElementsAre("ready", "will", "did"));
  EXPECT_FALSE(ad->isPresented());
  EXPECT_FALSE(screen->view()->superview());

  ad->presentFromRootViewController(root);  // used up
  EXPECT_FALSE(ad->isPresented());
  EXPECT_EQ(network->impressions(AdFormat::Interstitial), 1);
}

TEST_F(AdViewsTest, TappingTheInterstitialOpensItsPageAndEscapeClosesIt) {
  auto ad = interstitial();
  ad->loadRequest(GADRequest::request());
  advance(0.6);
  ad->presentFromRootViewController(root);
  advance(0.5);
  tap(*ad->screen()->view());
  EXPECT_THAT(platform.urlOpener.opened,
              ElementsAre("https://www.twinlanes.example/with-a-friend"));

  EXPECT_TRUE(kit::deliverKey(*window, kit::Key::Escape));
  advance(0.5);
  EXPECT_THAT(recorder->events, ElementsAre("ready", "will", "did"));
}

TEST_F(AdViewsTest, AnInterstitialWaitsWhileItsPresenterIsBusy) {
  auto ad = interstitial();
  ad->loadRequest(GADRequest::request());
  advance(0.6);
  root->presentViewController(std::make_shared<kit::ViewController>(), false);
  ad->presentFromRootViewController(root);
  EXPECT_FALSE(ad->isPresented());
  EXPECT_TRUE(ad->isReady());
  ad->presentFromRootViewController(nullptr);
  EXPECT_TRUE(ad->isReady());
}

TEST_F(AdViewsTest, AFailedInterstitialNeverBecomesReadyAndTellsNobody) {
  network->setAnswer(HouseAdNetwork::Answer::Fail);
  auto ad = interstitial();
  ad->loadRequest(GADRequest::request());
  advance(0.6);
  network->setAnswer(HouseAdNetwork::Answer::Fill);
  ad->loadRequest(GADRequest::request());  // one request per interstitial
  advance(5);
  EXPECT_FALSE(ad->isReady());
  EXPECT_THAT(recorder->events, IsEmpty());
}

}  // namespace
