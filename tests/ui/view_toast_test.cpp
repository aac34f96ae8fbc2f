#include "ui/view_toast.h"

#include <gtest/gtest.h>

#include <string>

#include "kit/ui/activity_indicator_view.h"
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
  std::shared_ptr<kit::Image> image = std::make_shared<kit::Image>(kit::Image::blank({40, 20}, 1));
  std::vector<std::shared_ptr<kit::View>> toasts() const { return host->subviews(); }
};

TEST_F(ToastTest, MessagePanelHugsItsTextUpToFourFifthsOfTheHostAndStaysThreeSecondsAtTheBottom) {
  makeToast(*host, kMessage);
  auto toast = onlyToastOf(*host);
  const Rect text = labelsOf(*toast).at(0)->frame();
  EXPECT_EQ(text.size, kit::sizeWithFont(kMessage, kit::Font::systemFontOfSize(16), {256, 384}));
  EXPECT_GT(text.size.width, 100);  // real glyphs were measured
  EXPECT_EQ(text.origin, (Point{10, 10}));
  EXPECT_EQ(toast->frame().size, (Size{text.size.width + 20, text.size.height + 20}));
  EXPECT_EQ(toast->center().x, 160);
  EXPECT_EQ(toast->frame().maxY(), 470);
  advance(3.38);
  EXPECT_EQ(toasts().size(), 1u);
  advance(0.06);
  EXPECT_TRUE(toasts().empty());

  std::string essay;  // wraps and grows the panel up to four fifths of the host
  for (int i = 0; i < 40; ++i)
    essay += kSentence;
  makeToast(*host, essay);
  const Rect wrapped = labelsOf(*onlyToastOf(*host)).at(0)->frame();
  EXPECT_LE(wrapped.size.height, 384);
  EXPECT_GT(wrapped.size.height, 384 - 40) << "as many whole lines as fit";
  EXPECT_EQ(host->subviews()[0]->frame().size.height, wrapped.size.height + 20);
}

TEST_F(ToastTest, ImageSitsAtTheLeftAndPushesTheTextToOneHundred) {
  makeToast(*host, kMessage, 3, "bottom", image);
  auto toast = onlyToastOf(*host);
  const Rect text = labelsOf(*toast).at(0)->frame();
  EXPECT_EQ(text.origin, (Point{100, 10}));
  EXPECT_EQ(toast->frame().size.width, text.size.width + 110);
  EXPECT_EQ(toast->frame().size.height, 100);
  auto imageView = std::dynamic_pointer_cast<kit::ImageView>(toast->subviews().back());
  ASSERT_TRUE(imageView) << "the image lies on top";
  EXPECT_EQ(imageView->frame(), (Rect{{10, 10}, {80, 80}}));
}

TEST_F(ToastTest, TitleGoesAboveTheMessageInBoldAndAloneGetsTwentyPointsOfPanel) {
  makeToast(*host, kMessage, 3, "bottom", std::string("No mail"));
  auto labels = labelsOf(*onlyToastOf(*host));
  ASSERT_EQ(labels.size(), 2u);
  EXPECT_TRUE(labels[0]->font().bold && !labels[1]->font().bold);
  EXPECT_EQ(labels[1]->frame().origin, (Point{10, 20 + labels[0]->frame().size.height}));
  EXPECT_EQ(host->subviews()[0]->frame().size.height, labels[1]->frame().maxY() + 10);

  auto titleOnly = viewForMessage(*host, std::nullopt, kSentence + kSentence, nullptr);
  const Rect title = labelsOf(*titleOnly).at(0)->frame();
  EXPECT_GT(title.size.height, 20) << "the title wraps onto several lines";
  EXPECT_EQ(titleOnly->frame().size, (Size{title.size.width + 20, 20}));
  EXPECT_EQ(viewForMessage(*host, std::nullopt, "Title", image)->frame().size.height, 100);
}

TEST_F(ToastTest, PositionsIgnoreCaseTakePointsAsTheCentreAndWarnOfAnythingElse) {
  auto toast = std::make_shared<kit::View>(Rect{{0, 0}, {120, 40}});
  const std::pair<ToastPosition, Point> cases[] = {
      {"TOP", {160, 30}}, {"Center", {160, 240}}, {"bOTTOM", {160, 450}}, {Point{9, 9}, {9, 9}}};
  for (const auto& [position, center] : cases)
    EXPECT_EQ(centerPointForPosition(*host, position, *toast), center);
  // Nothing to show shows nothing, wherever.
  EXPECT_EQ(viewForMessage(*host, std::nullopt, std::nullopt, nullptr), nullptr);
  showToast(*host, nullptr, 3, "nowhere");
  EXPECT_TRUE(toasts().empty());
  EXPECT_TRUE(log.lines().empty());

  const ToastPosition invalid[] = {"middle", ToastPosition::none(), " top",
                                   static_cast<const char*>(nullptr)};
  for (const ToastPosition& position : invalid) {
    EXPECT_EQ(centerPointForPosition(*host, position, *toast), (Point{160, 450}));
    EXPECT_EQ(log.take(), std::vector<std::string>{kWarning});
  }
  makeToast(*host, kMessage, 1, "middle");
  EXPECT_EQ(onlyToastOf(*host)->frame().maxY(), 470);
  EXPECT_EQ(log.take(), std::vector<std::string>{kWarning});
}

TEST_F(ToastTest, ToastFadesInStaysForItsDurationFadesOutAndLeaves) {
  makeToast(*host, kMessage, 1.5, "center");
  auto toast = onlyToastOf(*host);
  EXPECT_EQ(toast->presentationAlpha(), 0);
  advance(0.1);
  EXPECT_GT(toast->presentationAlpha(), 0.5) << "ease-out runs ahead";
  EXPECT_LT(toast->presentationAlpha(), 1);
  advance(1.55);  // 1.65 s
  EXPECT_EQ(toast->presentationAlpha(), 1);
  auto own = std::make_shared<kit::View>(Rect{{0, 0}, {50, 50}});
  showToast(*host, own, 1, "top");  // not queued: both are up, each on its own time
  advance(0.1);                     // 1.75 s: fading out
  EXPECT_LT(toast->presentationAlpha(), 1);
  EXPECT_GT(toast->presentationAlpha(), 0.5) << "ease-in starts slowly";
  advance(0.12);  // 1.87 s
  EXPECT_EQ(toasts().size(), 2u);
  advance(0.06);  // 1.93 s: duration + 0.4 and a frame
  EXPECT_EQ(toasts(), std::vector<std::shared_ptr<kit::View>>{own});
}

TEST_F(ToastTest, ActivityPanelSpinsInTheCentreIsKeptOnlyOnceAndStaysUntilHidden) {
  hideToastActivity(*host);  // none yet: nothing happens
  makeToastActivity(*host);
  makeToastActivity(*host, "top");
  auto panel = onlyToastOf(*host);
  EXPECT_EQ(panel->frame(), (Rect{{110, 190}, {100, 100}}));
  auto spinner = std::dynamic_pointer_cast<kit::ActivityIndicatorView>(panel->subviews().at(0));
  EXPECT_TRUE(spinner && spinner->isAnimating());
  advance(10);
  EXPECT_EQ(toasts().size(), 1u);
}

TEST_F(ToastTest, HiddenActivityPanelFadesOutFromWhereItIsAndNeverStrandsANewerOne) {
  makeToastActivity(*host);
  advance(0.1);
  auto panel = onlyToastOf(*host);
  const double reached = panel->presentationAlpha();
  ASSERT_GT(reached, 0.3);
  hideToastActivity(*host);
  advance(1.0 / 60);
  EXPECT_LE(panel->presentationAlpha(), reached);
  EXPECT_GT(panel->presentationAlpha(), reached - 0.1) << "no jump";
  makeToastActivity(*host);  // still attached while it fades
  EXPECT_EQ(toasts().size(), 1u);
  hideToastActivity(*host);  // the first fade-out is taken over and ends now
  advance(1.0 / 60);
  ASSERT_TRUE(toasts().empty());
  makeToastActivity(*host);
  advance(0.3);  // the second fade-out of the old panel ends meanwhile
  ASSERT_EQ(toasts().size(), 1u);
  EXPECT_NE(toasts()[0], panel);
  hideToastActivity(*host);
  advance(0.25);
  EXPECT_TRUE(toasts().empty());
}

}  // namespace
