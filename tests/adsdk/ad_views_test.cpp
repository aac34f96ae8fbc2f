#include "adsdk/adsdk_fixture.h"
#include "adsdk/interstitial_ad_view_controller.h"
#include "kit/ui/key_receiver.h"

namespace {

using ::testing::ElementsAre;

class AdViewsTest : public AdsdkTest {
 protected:
  static void tap(kit::View& view) {
    const kit::Point middle{view.bounds().size.width / 2, view.bounds().size.height / 2};
    dynamic_cast<kit::TouchReceiver&>(view).touchesBegan({middle});
  }
};

TEST_F(AdViewsTest, ABannerShowsItsAdFittedAndOpensItsPageWhenTapped) {
  auto view = banner();
  advance(0.6);
  EXPECT_THAT(recorder->events, ElementsAre("banner ok"));
  auto image = std::dynamic_pointer_cast<kit::ImageView>(view->subviews().at(0));
  ASSERT_TRUE(image);
  view->setFrame({{0, 0}, {768, 90}});
  EXPECT_EQ(image->frame().size, (kit::Size{768, 90})) << "the picture follows the frame";

  tap(*view);
  EXPECT_THAT(platform.urlOpener.opened,
              ElementsAre("https://www.twinlanes.example/with-a-friend"));
}

TEST_F(AdViewsTest, AFailedRequestLeavesTheBannerAsItWasAndANewerOneSupersedes) {
  auto view = banner();
  advance(0.6);
  network->setAnswer(HouseAdNetwork::Answer::Fail);
  view->loadRequest(GADRequest::request());
  advance(0.6);
  EXPECT_THAT(recorder->events, ElementsAre("banner ok", "banner failed 1"));  // no fill
  EXPECT_EQ(view->creative()->name, "play-with-a-friend");

  network->setAnswer(HouseAdNetwork::Answer::Slow, 2);
  view->loadRequest(GADRequest::request());
  network->setAnswer(HouseAdNetwork::Answer::Fill);
  view->loadRequest(GADRequest::request());
  advance(3);
  EXPECT_THAT(recorder->events, ElementsAre("banner ok", "banner failed 1", "banner ok"));
}

TEST_F(AdViewsTest, AnInterstitialIsShownOnceOverTheWindowUntilClosedByTapOrEscape) {
  auto ad = interstitial();
  advance(0.6);
  ad->presentFromRootViewController(root);
  advance(0.5);
  auto screen = ad->screen();
  EXPECT_EQ(screen->closeButton()->frame().maxX(), 320 - InterstitialAdViewController::kMargin);
  tap(*screen->view());
  EXPECT_THAT(platform.urlOpener.opened,
              ElementsAre("https://www.twinlanes.example/with-a-friend"));

  tap(*screen->closeButton());
  advance(0.5);
  EXPECT_THAT(recorder->events, ElementsAre("ready", "will", "did"));
  ad->presentFromRootViewController(root);
  EXPECT_FALSE(ad->isPresented()) << "used up";

  auto next = interstitial();
  advance(0.6);
  next->presentFromRootViewController(root);
  EXPECT_TRUE(kit::deliverKey(*window, kit::Key::Escape));
  advance(0.5);
  EXPECT_FALSE(next->isPresented()) << "Escape closes it";
}

}  // namespace
