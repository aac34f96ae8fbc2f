// The pixels an image context holds for its size, whatever backs it.
#include "kit/ui/image_extent.h"

#include <gtest/gtest.h>

#include <limits>

namespace kit {
namespace {

TEST(ImageExtent, RoundsUpWithoutGainingAPixelFromARoundingError) {
  const ImageExtent e = imageExtent({100, 10.2}, 1.1, 32767);
  EXPECT_EQ(e.width, 110);
  EXPECT_EQ(e.height, 12);
  EXPECT_EQ(e.size, (Size{100, 10.2}));
  EXPECT_EQ(e.scale, 1.1);
}

TEST(ImageExtent, UnusableOrOversizedSizesHoldNoPixels) {
  const double inf = std::numeric_limits<double>::infinity();
  const ImageExtent negative = imageExtent({-1, 10}, 2, 32767);
  EXPECT_EQ(negative.size, (Size{0, 0}));
  EXPECT_EQ(negative.width, 0);
  EXPECT_EQ(imageExtent({inf, 10}, 2, 32767).size, (Size{0, 0}));
  // One side over the limit leaves neither side any pixels.
  const ImageExtent wide = imageExtent({20000, 10}, 1, 16384);
  EXPECT_EQ(wide.width, 0);
  EXPECT_EQ(wide.height, 0);
  EXPECT_EQ(wide.size, (Size{20000, 10}));
  EXPECT_EQ(imageExtent({0, 10}, 1, 16384).height, 0);
}

}  // namespace
}  // namespace kit
