#include "ui/view_toast.h"

#include <gtest/gtest.h>

#include <string>

#include "kit/ui/activity_indicator_view.h"
#include "kit/ui/image_context.h"
#include "kit/ui/image_view.h"
#include "kit/ui/text_layout.h"
#include "overlay_fixture.h"

namespace {

using kit::Point;
using kit::Rect;
using kit::Size;

constexpr const char* kWarning = "Warning: Invalid position for toast.";
constexpr const char* kMessage = "Mail is not set up on this device";
// Wraps in any toast a phone-sized host allows.
const std::string kSentence =
    "The quick brown fox jumps over the lazy dog while the cars keep to their lanes. ";

class ToastTest : public OverlayTest {
 protected:
  // What the real message font needs within a text area.
  static Size messageSize(const std::string& text, Size area) {
    return kit::sizeWithFont(text, kit::Font::systemFontOfSize(16), area);
  }

  static std::shared_ptr<kit::Image> image() {
    kit::ImageContext context({40, 20}, 1);
    context.fillRect({{0, 0}, {40, 20}}, {1, 0.5, 0, 1});
    return std::make_shared<kit::Image>(context.takeImage());
  }

  std::shared_ptr<kit::View> host = makeHost(320, 480);
};

// [Layout of the panel]

TEST_F(ToastTest, MessageOnlyPanelHugsItsTextAndSitsTenPointsAboveTheBottom) {
  makeToast(*host, kMessage);
  auto toast = onlyToastOf(*host);
  auto labels = labelsOf(*toast);
  ASSERT_EQ(labels.size(), 1u);
  const Rect text = labels[0]->frame();

  EXPECT_EQ(text.size, messageSize(kMessage, {256, 384}));
  EXPECT_GT(text.size.width, 100);  // real glyphs were measured
  EXPECT_EQ(text.origin, (Point{10, 10}));
  EXPECT_EQ(toast->frame().size, (Size{text.size.width + 20, text.size.height + 20}));
  EXPECT_EQ(toast->center().x, 160);
  EXPECT_EQ(toast->frame().maxY(), 470);
  EXPECT_EQ(labels[0]->text(), kMessage);
  EXPECT_EQ(labels[0]->numberOfLines(), 0);
  EXPECT_EQ(labels[0]->lineBreakMode(), kit::LineBreakMode::WordWrap);
  EXPECT_EQ(labels[0]->textColor(), kit::Color::white());
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ToastTest, BothPanelsShareTheRoundedTranslucentLook) {
  makeToast(*host, kMessage);
  makeToastActivity(*host);
  ASSERT_EQ(toastsOf(*host).size(), 2u);
  for (const auto& panel : toastsOf(*host)) {
    EXPECT_EQ(panel->backgroundColor(), kit::Color::black().withAlpha(0.8));
    EXPECT_EQ(panel->cornerRadius(), 10);
    EXPECT_EQ(panel->shadowColor(), kit::Color::black());
    EXPECT_EQ(panel->shadowOpacity(), 0.8);
    EXPECT_EQ(panel->shadowRadius(), 6);
    EXPECT_EQ(panel->shadowOffset(), (Size{4, 4}));
    EXPECT_EQ(panel->autoresizingMask(), 45u);
  }
}

TEST_F(ToastTest, ImageSitsAtTheLeftAndPushesTheTextToOneHundred) {
  makeToast(*host, kMessage, 3, "bottom", image());
  auto toast = onlyToastOf(*host);
  auto labels = labelsOf(*toast);
  ASSERT_EQ(labels.size(), 1u);
  const Rect text = labels[0]->frame();
  EXPECT_EQ(text.origin, (Point{100, 10}));
  EXPECT_EQ(toast->frame().size.width, text.size.width + 110);
  EXPECT_GE(toast->frame().size.height, 100);

  auto imageView = std::dynamic_pointer_cast<kit::ImageView>(toast->subviews().back());
  ASSERT_TRUE(imageView) << "the image lies on top";
  EXPECT_EQ(imageView->frame(), (Rect{{10, 10}, {80, 80}}));
  EXPECT_EQ(imageView->contentMode(), kit::ContentMode::ScaleAspectFit);
}

TEST_F(ToastTest, ImageLeavesLessRoomForLongText) {
  makeToast(*host, kSentence + kSentence, 3, "bottom", image());
  const Rect text = labelsOf(*onlyToastOf(*host))[0]->frame();
  EXPECT_LE(text.size.width, 0.8 * 320 - 80);
  EXPECT_GT(text.size.width, 0.8 * 320 - 80 - 40) << "wrapped lines fill the area";
  EXPECT_GT(text.size.height, 3 * 16);
}

TEST_F(ToastTest, LongMessageWrapsAndGrowsThePanelUpToFourFifthsOfTheHost) {
  std::string essay;
  for (int i = 0; i < 40; ++i)
    essay += kSentence;
  makeToast(*host, essay);
  auto toast = onlyToastOf(*host);
  const Rect text = labelsOf(*toast)[0]->frame();
  EXPECT_LE(text.size.width, 256);
  EXPECT_LE(text.size.height, 384);
  EXPECT_GT(text.size.height, 384 - 40) << "as many whole lines as fit";
  EXPECT_EQ(toast->frame().size.height, text.size.height + 20);
  EXPECT_EQ(toast->frame().maxY(), 470);
}

TEST_F(ToastTest, TitleGoesAboveTheMessageInBold) {
  makeToast(*host, kMessage, 3, "bottom", std::string("No mail"));
  auto toast = onlyToastOf(*host);
  auto labels = labelsOf(*toast);
  ASSERT_EQ(labels.size(), 2u);
  const auto& title = labels[0];
  const auto& message = labels[1];
  EXPECT_TRUE(title->font().bold);
  EXPECT_FALSE(message->font().bold);
  EXPECT_EQ(title->frame().origin, (Point{10, 10}));
  EXPECT_EQ(message->frame().origin, (Point{10, 10 + title->frame().size.height + 10}));
  EXPECT_EQ(toast->frame().size.height, message->frame().maxY() + 10);
}

TEST_F(ToastTest, TitleWithoutMessageGetsOnlyTwentyPointsOfPanel) {
  makeToast(*host, std::nullopt, 3, "top", kSentence + kSentence);
  auto toast = onlyToastOf(*host);
  const Rect title = labelsOf(*toast)[0]->frame();
  EXPECT_GT(title.size.height, 20) << "the title wraps onto several lines";
  EXPECT_EQ(toast->frame().size.height, 20);
  EXPECT_EQ(toast->frame().size.width, title.size.width + 20);

  auto withImage = viewForMessage(*host, std::nullopt, "Title", image());
  EXPECT_EQ(withImage->frame().size.height, 100);
}

TEST_F(ToastTest, NothingToShowShowsNothingAndSaysNothing) {
  EXPECT_EQ(viewForMessage(*host, std::nullopt, std::nullopt, nullptr), nullptr);
  makeToast(*host, std::nullopt, 3, "bottom", std::nullopt, nullptr);
  showToast(*host, nullptr, 3, "nowhere");
  EXPECT_TRUE(toastsOf(*host).empty());
  EXPECT_TRUE(log.lines().empty());
  advance(4);
  EXPECT_TRUE(toastsOf(*host).empty());
}

// [Placement]

TEST_F(ToastTest, PositionWordsIgnoreCaseAndPointsAreTakenAsTheCentre) {
  auto toast = std::make_shared<kit::View>(Rect{{0, 0}, {120, 40}});
  struct Case {
    ToastPosition position;
    Point center;
  };
  const Case cases[] = {
      {"top", {160, 30}},
      {"TOP", {160, 30}},
      {"center", {160, 240}},
      {"Center", {160, 240}},
      {"bottom", {160, 450}},
      {"BoTToM", {160, 450}},
      {Point{100, 200}, {100, 200}},
      {ToastPosition::fromPoint({-5, 900}), {-5, 900}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(centerPointForPosition(*host, c.position, *toast), c.center);
  }
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ToastTest, InvalidPositionWarnsOncePerPlacementAndFallsBackToTheBottom) {
  auto toast = std::make_shared<kit::View>(Rect{{0, 0}, {120, 40}});
  const ToastPosition invalid[] = {"middle", ToastPosition::none(), std::string(), " top",
                                   static_cast<const char*>(nullptr)};
  for (const ToastPosition& position : invalid) {
    EXPECT_EQ(centerPointForPosition(*host, position, *toast), (Point{160, 450}));
    EXPECT_EQ(log.take(), std::vector<std::string>{kWarning});
  }

  makeToast(*host, kMessage, 1, "middle");
  EXPECT_EQ(onlyToastOf(*host)->frame().maxY(), 470);
  EXPECT_EQ(log.take(), std::vector<std::string>{kWarning});
}

// [Timeline]

TEST_F(ToastTest, ToastFadesInStaysForItsDurationFadesOutAndLeaves) {
  makeToast(*host, kMessage, 1.5, "center");
  auto toast = onlyToastOf(*host);
  EXPECT_EQ(toast->presentationAlpha(), 0);

  advance(0.1);
  EXPECT_GT(toast->presentationAlpha(), 0.5) << "ease-out runs ahead";
  EXPECT_LT(toast->presentationAlpha(), 1);
  advance(0.15);
  EXPECT_EQ(toast->presentationAlpha(), 1);
  advance(1.4);  // 1.65 s
  EXPECT_EQ(toast->presentationAlpha(), 1);
  advance(0.1);  // 1.75 s: fading out
  EXPECT_LT(toast->presentationAlpha(), 1);
  EXPECT_GT(toast->presentationAlpha(), 0.5) << "ease-in starts slowly";
  advance(0.12);  // 1.87 s
  EXPECT_EQ(toastsOf(*host).size(), 1u);
  advance(0.06);  // 1.93 s: duration + 0.4 and a frame
  EXPECT_TRUE(toastsOf(*host).empty());
}

TEST_F(ToastTest, ShortFormStaysThreeSecondsAtTheBottom) {
  makeToast(*host, kMessage);
  advance(3.38);
  ASSERT_EQ(toastsOf(*host).size(), 1u);
  EXPECT_EQ(toastsOf(*host)[0]->frame().maxY(), 470);
  advance(0.06);
  EXPECT_TRUE(toastsOf(*host).empty());
}

TEST_F(ToastTest, ToastsAreNotQueuedButStackWithTheirOwnTimes) {
  makeToast(*host, "first", 1, "bottom");
  advance(0.5);
  auto own = std::make_shared<kit::View>(Rect{{0, 0}, {50, 50}});
  showToast(*host, own);
  ASSERT_EQ(toastsOf(*host).size(), 2u);
  EXPECT_EQ(toastsOf(*host).back(), own);

  advance(1.0);  // the first one's 1.4 s are over
  EXPECT_EQ(toastsOf(*host), std::vector<std::shared_ptr<kit::View>>{own});
  EXPECT_EQ(own->frame().maxY(), 470);
  advance(2.5);
  EXPECT_TRUE(toastsOf(*host).empty());
}

// [Activity toast]

TEST_F(ToastTest, ActivityPanelSpinsInTheCentreAndIsKeptOnlyOnce) {
  makeToastActivity(*host);
  makeToastActivity(*host, "top");
  auto panel = onlyToastOf(*host);
  EXPECT_EQ(panel->frame(), (Rect{{110, 190}, {100, 100}}));
  EXPECT_EQ(panel->presentationAlpha(), 0);
  advance(0.25);
  EXPECT_EQ(panel->presentationAlpha(), 1);

  ASSERT_EQ(panel->subviews().size(), 1u);
  auto spinner = std::dynamic_pointer_cast<kit::ActivityIndicatorView>(panel->subviews()[0]);
  ASSERT_TRUE(spinner);
  EXPECT_EQ(spinner->style(), kit::ActivityIndicatorViewStyle::WhiteLarge);
  EXPECT_TRUE(spinner->isAnimating());
  EXPECT_EQ(spinner->center(), (Point{50, 50}));
  advance(10);
  EXPECT_EQ(toastsOf(*host).size(), 1u) << "stays until hidden";
}

TEST_F(ToastTest, HidingWithoutAnActivityPanelDoesNothing) {
  makeToast(*host, kMessage);
  hideToastActivity(*host);
  EXPECT_EQ(toastsOf(*host).size(), 1u);
  EXPECT_EQ(toastsOf(*host)[0]->alpha(), 1);
}

TEST_F(ToastTest, HiddenActivityPanelFadesOutThenMakesRoomForANewOne) {
  makeToastActivity(*host);
  advance(0.3);
  auto first = onlyToastOf(*host);
  hideToastActivity(*host);
  advance(0.1);
  EXPECT_LT(first->presentationAlpha(), 1);
  makeToastActivity(*host);  // still attached while it fades
  EXPECT_EQ(toastsOf(*host).size(), 1u);

  advance(0.12);
  EXPECT_TRUE(toastsOf(*host).empty());
  makeToastActivity(*host);
  auto second = onlyToastOf(*host);
  EXPECT_NE(second, first);
}

TEST_F(ToastTest, HidingDuringTheFadeInFadesOutFromWhereItIs) {
  makeToastActivity(*host);
  advance(0.1);
  auto panel = onlyToastOf(*host);
  const double reached = panel->presentationAlpha();
  ASSERT_GT(reached, 0.3);
  hideToastActivity(*host);
  advance(1.0 / 60);
  EXPECT_LE(panel->presentationAlpha(), reached);
  EXPECT_GT(panel->presentationAlpha(), reached - 0.1) << "no jump";
  advance(0.22);
  EXPECT_TRUE(toastsOf(*host).empty());
}

TEST_F(ToastTest, SecondHideDuringTheFadeOutStillRemovesThePanel) {
  makeToastActivity(*host);
  advance(0.3);
  hideToastActivity(*host);
  advance(0.1);
  hideToastActivity(*host);
  advance(0.25);
  EXPECT_TRUE(toastsOf(*host).empty());
  makeToastActivity(*host);
  EXPECT_EQ(toastsOf(*host).size(), 1u);
}

TEST_F(ToastTest, LateFadeOutNeverStrandsANewerActivityPanel) {
  makeToastActivity(*host);
  advance(0.3);
  hideToastActivity(*host);
  advance(0.1);
  hideToastActivity(*host);  // the first fade-out is taken over and ends now
  advance(1.0 / 60);
  ASSERT_TRUE(toastsOf(*host).empty());

  makeToastActivity(*host);
  advance(0.3);  // the second fade-out of the old panel ends meanwhile
  ASSERT_EQ(toastsOf(*host).size(), 1u);
  hideToastActivity(*host);
  advance(0.25);
  EXPECT_TRUE(toastsOf(*host).empty());
}

}  // namespace
