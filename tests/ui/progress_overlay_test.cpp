#include "ui/progress_overlay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "kit/ui/activity_indicator_view.h"
#include "overlay_fixture.h"
#include "ui/progress_bar_view.h"
#include "ui/progress_demo.h"
#include "ui/progress_ring_view.h"

namespace {

using kit::Point;
using kit::Rect;
using Mode = ProgressOverlay::Mode;

class ProgressOverlayTest : public OverlayTest {
 protected:
  std::unique_ptr<ProgressOverlay> makeOverlay(Mode mode = Mode::Indeterminate) {
    return std::make_unique<ProgressOverlay>(host, runLoop, mode);
  }
  bool panelIsUp(const ProgressOverlay& overlay) const {
    return overlay.panel()->superview() == host;
  }

  std::shared_ptr<kit::View> host = makeHost(320, 480);
};

// [Grace and minimum times]

TEST_F(ProgressOverlayTest, WorkDoneWithinTheGraceTimeShowsNothingAtAll) {
  auto overlay = makeOverlay();
  overlay->show();
  advance(0.25);
  EXPECT_TRUE(toastsOf(*host).empty());
  overlay->hide();
  advance(2);
  EXPECT_TRUE(toastsOf(*host).empty());
  EXPECT_FALSE(overlay->isVisible());
}

TEST_F(ProgressOverlayTest, PanelAppearsAfterTheGraceTimeAndFadesIn) {
  auto overlay = makeOverlay();
  overlay->show();
  overlay->show();  // a second call does not restart the grace time
  advance(0.28);
  EXPECT_TRUE(toastsOf(*host).empty());
  advance(0.04);
  ASSERT_TRUE(panelIsUp(*overlay));
  EXPECT_TRUE(overlay->isVisible());
  EXPECT_LT(overlay->panel()->presentationAlpha(), 0.5);
  advance(0.2);
  EXPECT_EQ(overlay->panel()->presentationAlpha(), 1);
  EXPECT_EQ(overlay->panel()->center(), (Point{160, 240}));
}

TEST_F(ProgressOverlayTest, PanelShownBrieflyStaysTheMinimumTimeBeforeFading) {
  auto overlay = makeOverlay();
  overlay->show();
  advance(0.35);  // up since about 0.31 s
  overlay->hide();
  advance(0.4);  // 0.75 s
  EXPECT_TRUE(panelIsUp(*overlay));
  EXPECT_EQ(overlay->panel()->presentationAlpha(), 1);
  advance(0.1);  // 0.85 s: past the half second, fading
  EXPECT_LT(overlay->panel()->presentationAlpha(), 1);
  advance(0.2);
  EXPECT_TRUE(toastsOf(*host).empty());
  EXPECT_FALSE(overlay->isVisible());
}

TEST_F(ProgressOverlayTest, PanelUpLongEnoughFadesOutAtOnce) {
  auto overlay = makeOverlay();
  overlay->show();
  advance(2);
  overlay->hide();
  advance(0.1);
  EXPECT_LT(overlay->panel()->presentationAlpha(), 1);
  advance(0.12);
  EXPECT_TRUE(toastsOf(*host).empty());
}

TEST_F(ProgressOverlayTest, ShowingAgainWhileHidingKeepsThePanelUp) {
  auto overlay = makeOverlay();
  overlay->show();
  advance(0.4);
  overlay->hide();  // waits out the minimum time
  advance(0.1);
  overlay->show();
  advance(1);
  EXPECT_TRUE(panelIsUp(*overlay));

  overlay->hide();  // fades out now
  advance(0.1);
  const double faded = overlay->panel()->presentationAlpha();
  ASSERT_LT(faded, 1);
  overlay->show();
  advance(0.5);
  EXPECT_TRUE(panelIsUp(*overlay)) << "the interrupted fade-out must not remove it";
  EXPECT_EQ(overlay->panel()->presentationAlpha(), 1);
}

TEST_F(ProgressOverlayTest, OverlayCanBeShownAgainAfterItHasGone) {
  auto overlay = makeOverlay();
  for (int round = 0; round < 2; ++round) {
    overlay->show();
    advance(1);
    overlay->hide();
    advance(0.3);
    EXPECT_TRUE(toastsOf(*host).empty()) << round;
  }
  overlay->show();
  advance(0.4);
  EXPECT_TRUE(panelIsUp(*overlay));
}

TEST_F(ProgressOverlayTest, DroppingTheOverlayTakesThePanelAwayMidFade) {
  auto overlay = makeOverlay();
  overlay->show();
  advance(1);
  overlay->hide();
  advance(0.05);
  overlay.reset();
  EXPECT_TRUE(toastsOf(*host).empty());
  advance(1);  // the orphaned fade's completion finds nothing to do
  EXPECT_TRUE(toastsOf(*host).empty());

  overlay = makeOverlay();
  overlay->show();
  overlay.reset();  // with the grace timer pending
  advance(1);
  EXPECT_TRUE(toastsOf(*host).empty());
}

TEST_F(ProgressOverlayTest, GoneHostIsNoError) {
  auto overlay = makeOverlay();
  overlay->show();
  host.reset();
  advance(1);
  overlay->hide();
  advance(1);
  EXPECT_FALSE(overlay->isVisible());
}

// [Content]

TEST_F(ProgressOverlayTest, IndeterminatePanelHoldsASpinningIndicator) {
  auto overlay = makeOverlay();
  const auto& panel = overlay->panel();
  EXPECT_EQ(panel->frame().size, (kit::Size{100, 100}));
  ASSERT_EQ(panel->subviews().size(), 1u);
  auto spinner = std::dynamic_pointer_cast<kit::ActivityIndicatorView>(panel->subviews()[0]);
  ASSERT_TRUE(spinner);
  EXPECT_TRUE(spinner->isAnimating());
  EXPECT_EQ(spinner->center(), (Point{50, 50}));
}

TEST_F(ProgressOverlayTest, RingLightsItsDotsClockwiseAsProgressGrows) {
  auto ring = ProgressRingView::create(37);
  ASSERT_EQ(ring->subviews().size(), size_t{ProgressRingView::kDots});
  const Rect first = ring->dots()[0]->frame();
  const Rect quarter = ring->dots()[ProgressRingView::kDots / 4]->frame();
  EXPECT_NEAR(first.midX(), 18.5, 1e-9) << "the first dot is at twelve o'clock";
  EXPECT_NEAR(first.minY(), 0, 1e-9);
  EXPECT_NEAR(quarter.maxX(), 37, 1e-9) << "a quarter round is at three o'clock";
  EXPECT_NEAR(quarter.midY(), 18.5, 1e-9);

  const struct {
    double progress;
    int lit;
  } cases[] = {{0, 0},   {0.05, 0},  {0.25, 4},
               {0.5, 8}, {0.99, 15}, {1, 16},
               {7, 16},  {-1, 0},    {std::numeric_limits<double>::quiet_NaN(), 0}};
  for (const auto& c : cases) {
    ring->setProgress(c.progress);
    EXPECT_EQ(ring->litDots(), c.lit) << c.progress;
    for (int i = 0; i < ProgressRingView::kDots; ++i) {
      const bool lit = ring->dots()[size_t(i)]->backgroundColor().alpha == 1;
      EXPECT_EQ(lit, i < c.lit) << c.progress << " dot " << i;
    }
  }
}

TEST_F(ProgressOverlayTest, BarFillFollowsProgressAndItsOwnSize) {
  auto bar = ProgressBarView::create({{0, 0}, {120, 8}});
  bar->setProgress(0.25);
  EXPECT_EQ(bar->fillView()->frame(), (Rect{{0, 0}, {30, 8}}));
  bar->setProgress(1.5);
  EXPECT_EQ(bar->fillView()->frame().size.width, 120);
  bar->setProgress(std::nan(""));
  EXPECT_EQ(bar->fillView()->frame().size.width, 0);

  bar->setProgress(0.5);
  bar->setFrame({{0, 0}, {200, 8}});
  EXPECT_EQ(bar->fillView()->frame().size.width, 100);
}

TEST_F(ProgressOverlayTest, ProgressCarriesOverWhenTheModeChanges) {
  auto overlay = makeOverlay(Mode::Ring);
  overlay->setProgress(0.5);
  overlay->setMode(Mode::Bar);
  auto bar = std::dynamic_pointer_cast<ProgressBarView>(overlay->panel()->subviews()[0]);
  ASSERT_TRUE(bar);
  EXPECT_EQ(bar->progress(), 0.5);
  overlay->setProgress(2);
  EXPECT_EQ(overlay->progress(), 1);
  EXPECT_EQ(bar->progress(), 1);
}

TEST_F(ProgressOverlayTest, LabelSitsUnderTheIndicatorAndWrapsWithinTheHost) {
  auto overlay = makeOverlay(Mode::Ring);
  overlay->setLabelText("Loading");
  const auto& panel = overlay->panel();
  auto labels = labelsOf(*panel);
  ASSERT_EQ(labels.size(), 1u);
  const Rect ring = panel->subviews()[0]->frame();
  const Rect text = labels[0]->frame();
  EXPECT_GE(text.minY(), ring.maxY());
  EXPECT_NEAR(text.midX(), panel->bounds().size.width / 2, 0.5);
  EXPECT_LE(text.maxY(), panel->bounds().size.height - 20);
  EXPECT_EQ(panel->center(), (Point{160, 240}));

  std::string longText;
  for (int i = 0; i < 30; ++i)
    longText += "downloading the next lane ";
  overlay->setLabelText(longText);
  const Rect wrapped = labelsOf(*panel)[0]->frame();
  EXPECT_LE(panel->frame().size.width, 0.8 * 320);
  EXPECT_LE(panel->frame().size.height, 0.8 * 480);
  EXPECT_GT(wrapped.size.height, 3 * 16);

  overlay->setLabelText("");
  EXPECT_TRUE(labelsOf(*panel).empty());
  EXPECT_EQ(panel->frame().size, (kit::Size{100, 100}));
}

// [Demo]

TEST_F(ProgressOverlayTest, DemoCountsToOneHundredAndLeaves) {
  auto demo = runProgressDemo(host, runLoop);
  advance(0.35);
  ASSERT_EQ(toastsOf(*host).size(), 1u);
  EXPECT_EQ(demo->overlay().mode(), Mode::Ring);
  EXPECT_EQ(demo->overlay().labelText(), "Loading 10%");
  advance(2.7);
  EXPECT_EQ(demo->overlay().labelText(), "Loading 100%");
  EXPECT_EQ(demo->overlay().progress(), 1);
  EXPECT_FALSE(demo->isFinished());
  advance(0.3);
  EXPECT_TRUE(demo->isFinished());
  EXPECT_TRUE(toastsOf(*host).empty());
}

}  // namespace
