#include "ui/progress_overlay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

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
  std::unique_ptr<ProgressOverlay> overlay =
      std::make_unique<ProgressOverlay>(host, runLoop, Mode::Indeterminate);
  bool panelIsUp() const { return overlay->panel()->superview() == host; }
};

TEST_F(ProgressOverlayTest, NothingShowsWithinTheGraceTimeThenThePanelFadesIn) {
  overlay->show();
  advance(0.25);
  overlay->hide();
  advance(2);
  EXPECT_TRUE(host->subviews().empty()) << "work done within the grace time";

  overlay->show();
  overlay->show();  // a second call does not restart the grace time
  advance(0.28);
  EXPECT_FALSE(panelIsUp());
  advance(0.04);
  ASSERT_TRUE(panelIsUp());
  EXPECT_LT(overlay->panel()->presentationAlpha(), 0.5);
  advance(0.2);
  EXPECT_EQ(overlay->panel()->presentationAlpha(), 1);
  EXPECT_EQ(overlay->panel()->center(), (Point{160, 240}));
}

TEST_F(ProgressOverlayTest, PanelStaysAtLeastHalfASecondAndShowingAgainKeepsItUp) {
  overlay->show();
  advance(0.35);  // up since about 0.31 s
  overlay->hide();
  advance(0.4);  // 0.75 s
  EXPECT_EQ(overlay->panel()->presentationAlpha(), 1);
  advance(0.1);  // 0.85 s: past the half second, fading
  ASSERT_LT(overlay->panel()->presentationAlpha(), 1);
  overlay->show();
  advance(0.5);
  EXPECT_TRUE(panelIsUp()) << "the interrupted fade-out must not remove it";
  EXPECT_EQ(overlay->panel()->presentationAlpha(), 1);
  overlay->hide();  // up long enough: fades out at once
  advance(0.22);
  EXPECT_TRUE(host->subviews().empty());
  EXPECT_FALSE(overlay->isVisible());
}

TEST_F(ProgressOverlayTest, DroppingTheOverlayOrItsHostMidWayIsNoError) {
  overlay->show();
  advance(1);
  overlay->hide();
  advance(0.05);
  overlay = std::make_unique<ProgressOverlay>(host, runLoop, Mode::Ring);
  EXPECT_TRUE(host->subviews().empty());
  overlay->show();
  host.reset();
  overlay->hide();
  advance(1);
  EXPECT_FALSE(overlay->isVisible());
}

TEST_F(ProgressOverlayTest, RingLightsItsDotsClockwiseTheBarFillsAndTheLabelWrapsUnderThem) {
  auto ring = ProgressRingView::create(37);
  EXPECT_NEAR(ring->dots()[4]->frame().maxX(), 37, 1e-9) << "a quarter round is at three";
  for (auto [progress, lit] : {std::pair{0.05, 0}, {0.5, 8}, {0.99, 15}, {7.0, 16}, {NAN, 0}}) {
    ring->setProgress(progress);
    for (int i = 0; i < ProgressRingView::kDots; ++i)
      EXPECT_EQ(ring->dots()[size_t(i)]->backgroundColor().alpha == 1, i < lit) << progress;
  }

  overlay->setProgress(0.25);
  overlay->setMode(Mode::Bar);  // the progress carries over
  auto bar = std::static_pointer_cast<ProgressBarView>(overlay->panel()->subviews().at(0));
  EXPECT_EQ(bar->fillView()->frame().size.width, bar->frame().size.width / 4);
  overlay->setMode(Mode::Ring);
  overlay->setProgress(2);
  EXPECT_EQ(overlay->progress(), 1);

  std::string label;  // sits under the indicator, wrapping within the host
  for (int i = 0; i < 30; ++i)
    label += "downloading the next lane ";
  overlay->setLabelText(label);
  const Rect text = labelsOf(*overlay->panel()).at(0)->frame();
  EXPECT_GE(text.minY(), overlay->panel()->subviews()[0]->frame().maxY());
  EXPECT_LE(overlay->panel()->frame().size.width, 0.8 * 320);
  EXPECT_GT(text.size.height, 3 * 16);
}

TEST_F(ProgressOverlayTest, DemoCountsToOneHundredAndLeaves) {
  auto demo = runProgressDemo(host, runLoop);
  advance(0.35);
  EXPECT_EQ(demo->overlay().labelText(), "Loading 10%");
  advance(3);
  EXPECT_TRUE(demo->isFinished() && host->subviews().empty());
}

}  // namespace
