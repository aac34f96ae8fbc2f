// Layer panels and spinners rasterised with Cairo, handed over as straight
// alpha (what SDL's blending expects).
#include <gtest/gtest.h>

#include <cstdint>

#include "kit/render/panel_bitmap.h"

namespace kit {
namespace {

struct Rgba {
  int r, g, b, a;
};

Rgba at(const PanelBitmap& bitmap, int x, int y) {
  const uint8_t* p = bitmap.rgba.data() + (static_cast<size_t>(y) * bitmap.width + x) * 4;
  return {p[0], p[1], p[2], p[3]};
}

TEST(PanelBitmap, RoundedCornersAreClearAndTheFillIsStraightAlpha) {
  PanelStyle style;
  style.size = {40, 20};
  style.cornerRadius = 8;
  style.fill = {1, 0, 0, 0.5};
  const PanelBitmap b = rasterizePanel(style, 2);
  ASSERT_EQ(b.width, 80);
  ASSERT_EQ(b.height, 40);
  EXPECT_EQ(at(b, 0, 0).a, 0);
  EXPECT_EQ(at(b, 79, 39).a, 0);
  // Premultiplied this would read 128, 0, 0, 128.
  EXPECT_EQ(at(b, 40, 20).r, 255);
  EXPECT_NEAR(at(b, 40, 20).a, 128, 1);
}

TEST(PanelBitmap, TheShadowFallsOnTheOffsetSideAndFades) {
  PanelStyle style;
  style.size = {20, 20};
  style.fill = {1, 1, 1, 1};
  style.shadowOpacity = 0.8;
  style.shadowRadius = 4;
  style.shadowOffset = {0, 6};  // downwards
  const PanelBitmap b = rasterizePanel(style, 1);
  ASSERT_GT(b.height, 20);
  const int ox = static_cast<int>(b.origin.x), oy = static_cast<int>(b.origin.y);
  EXPECT_EQ(at(b, ox + 10, oy + 10).r, 255);  // the panel itself, on top
  const int below = at(b, ox + 10, oy + 22).a, above = at(b, ox + 10, oy - 2).a;
  EXPECT_GT(below, above + 40);
  EXPECT_EQ(at(b, ox + 10, oy + 22).r, 0);  // shadow colour: black
  EXPECT_LT(at(b, ox + 10, b.height - 1).a, below);
}

TEST(PanelBitmap, SpinnerHasItsBrightestSpokeOnTop) {
  const PanelBitmap b = rasterizeSpinner(20, 2, Color::white(), 12);
  ASSERT_EQ(b.width, 40);
  int top = 0, right = 0;
  for (int d = 6; d < 16; ++d) {
    top = std::max(top, at(b, 20, 20 - d).a);
    right = std::max(right, at(b, 20 + d, 20).a);
  }
  // The spoke a quarter turn clockwise from the top is among the faintest.
  EXPECT_GT(top, 200);
  EXPECT_LT(right, top * 0.6);
}

}  // namespace
}  // namespace kit
