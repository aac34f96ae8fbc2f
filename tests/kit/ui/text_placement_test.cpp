// Where a laid-out block lands in the bitmap render() makes, whatever draws it.
#include "kit/ui/text_placement.h"

#include <gtest/gtest.h>

#include <limits>

#include "kit/ui/premultiplied.h"

namespace kit {
namespace {

TEST(TextFrame, AnEmptyAreaOrUnusableScaleFallsBackToTheTextAndOne) {
  const TextFrame frame =
      textFrame({0, 30}, std::numeric_limits<double>::quiet_NaN(), {12, 5}, 4096);
  EXPECT_EQ(frame.area, (Size{12, 5}));
  EXPECT_EQ(frame.scale, 1);
  EXPECT_EQ(frame.bitmap.width, 12);
  EXPECT_EQ(frame.bitmap.height, 5);
  EXPECT_EQ(frame.bitmap.rgba.size(), 12u * 5 * 4);
}

TEST(TextFrame, PixelsRoundUpWithoutGainingOneFromARoundingErrorAndStopAtTheLimit) {
  EXPECT_EQ(textFrame({100, 10.2}, 1.1, {}, 4096).bitmap.width, 110);
  EXPECT_EQ(textFrame({100, 10.2}, 1.1, {}, 4096).bitmap.height, 12);
  EXPECT_EQ(textFrame({5000, 10}, 1, {}, 4096).bitmap.width, 4096);
  const TextFrame none = textFrame({0, 0}, 2, {0, 0}, 4096);
  EXPECT_EQ(none.bitmap.width, 0);
  EXPECT_TRUE(none.bitmap.rgba.empty());
}

TEST(TextPlacement, LinesAlignInTheirRoomAndBlocksCentreBelowTheTop) {
  EXPECT_EQ(alignedOffset(TextAlignment::Left, 10), 0);
  EXPECT_EQ(alignedOffset(TextAlignment::Center, 10), 5);
  EXPECT_EQ(alignedOffset(TextAlignment::Right, 10), 10);
  EXPECT_EQ(blockTop({50, 40}, {50, 20}), 10);
  EXPECT_EQ(blockTop({50, 10}, {50, 20}), 0);
}

TEST(Premultiplied, StraightensRoundingToNearestAndClearsTransparentPixels) {
  EXPECT_EQ(unpremultiplied(64, 128), 128);
  EXPECT_EQ(unpremultiplied(255, 128), 255);
  // ARGB words as the drawing library keeps them: half-transparent red, then
  // nothing with stray colour bits.
  const uint32_t argb[2] = {0x80800000u, 0x00123456u};
  uint8_t rgba[8];
  unpremultiply(reinterpret_cast<const uint8_t*>(argb), 2, 1, 8, rgba);
  EXPECT_EQ(rgba[0], 255);
  EXPECT_EQ(rgba[1], 0);
  EXPECT_EQ(rgba[3], 128);
  for (int i = 4; i < 8; ++i)
    EXPECT_EQ(rgba[i], 0);
}

}  // namespace
}  // namespace kit
