// The room panels leave for their shadow and the spinner's spokes, which
// every backend paints from.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kit/render/panel_geometry.h"

namespace kit {
namespace {

PanelStyle shadowed() {
  PanelStyle style;
  style.size = {40, 20};
  style.cornerRadius = 30;
  style.shadowOpacity = 0.5;
  style.shadowRadius = 3;
  style.shadowOffset = {2, -3};
  return style;
}

TEST(PanelGeometry, LeavesRoomForTheShadowOnTheSideItFalls) {
  const auto g = panelGeometry(shadowed(), 2, 4096);
  ASSERT_TRUE(g);
  EXPECT_EQ(g->shadowBlur, 6);
  EXPECT_EQ(g->shadowOffset, (Size{4, -6}));
  // Twice the blur on each side, shifted by the offset.
  EXPECT_EQ(g->panel.origin, (Point{8, 18}));
  EXPECT_EQ(g->width, 8 + 80 + 16);
  EXPECT_EQ(g->height, 18 + 40 + 6);
  EXPECT_DOUBLE_EQ(g->shadowAlpha, 0.5);
  // A radius beyond half the shorter side makes round ends, no more.
  EXPECT_EQ(g->cornerRadius, 20);
  const PanelBitmap blank = g->blank();
  EXPECT_EQ(blank.origin, g->panel.origin);
  EXPECT_EQ(blank.rgba.size(), size_t{104} * 64 * 4);
}

TEST(PanelGeometry, WithoutAShadowThePanelFillsTheBitmap) {
  PanelStyle style = shadowed();
  style.shadowOpacity = 0;
  const auto g = panelGeometry(style, 1.5, 4096);
  ASSERT_TRUE(g);
  EXPECT_EQ(g->width, 60);
  EXPECT_EQ(g->height, 30);
  EXPECT_EQ(g->panel.origin, (Point{0, 0}));
  EXPECT_EQ(g->shadowBlur, 0);
  EXPECT_EQ(g->shadowAlpha, 0);
}

TEST(PanelGeometry, RefusesUnusableSizesScalesAndWhatPassesTheLimit) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(panelGeometry(shadowed(), 0, 4096));
  EXPECT_FALSE(panelGeometry(shadowed(), nan, 4096));
  PanelStyle tiny = shadowed();
  tiny.size = {0.4, 20};
  EXPECT_FALSE(panelGeometry(tiny, 1, 4096));
  // The panel fits, its shadow's room does not.
  EXPECT_TRUE(panelGeometry(shadowed(), 2, 104));
  EXPECT_FALSE(panelGeometry(shadowed(), 2, 103));
  PanelStyle huge = shadowed();
  huge.shadowRadius = 1e300;
  EXPECT_FALSE(panelGeometry(huge, 1, 4096));
}

TEST(SpinnerGeometry, BrightestSpokeUpOthersFadingAnticlockwise) {
  const auto g = spinnerGeometry(20, 2, 0.5, 4, 4096);
  ASSERT_TRUE(g);
  EXPECT_EQ(g->side, 40);
  EXPECT_DOUBLE_EQ(g->inner, 40 * 0.22);
  EXPECT_DOUBLE_EQ(g->outer, 40 * 0.44);
  ASSERT_EQ(g->spokes.size(), 4u);
  EXPECT_EQ(g->spokes[0].angle, 0);
  EXPECT_DOUBLE_EQ(g->spokes[0].alpha, 0.5);
  EXPECT_DOUBLE_EQ(g->spokes[1].angle, -M_PI / 2);
  EXPECT_DOUBLE_EQ(g->spokes[3].alpha, 0.5 * 0.4);
  EXPECT_FALSE(spinnerGeometry(20, 2, 1, 0, 4096));
  EXPECT_FALSE(spinnerGeometry(0.1, 2, 1, 12, 4096));
  EXPECT_FALSE(spinnerGeometry(3000, 2, 1, 12, 4096));
}

}  // namespace
}  // namespace kit
