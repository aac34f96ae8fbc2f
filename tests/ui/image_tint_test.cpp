#include "ui/image_tint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "kit/ui/image_context.h"
#include "kit/ui/screen.h"

namespace {

using kit::BlendMode;
using kit::Color;
using kit::Image;
using Pixel = kit::Image::Pixel;

constexpr double kScreenScale = 2;

// Columns of the test sprite, one point wide each.
constexpr int kTransparent = 0, kLight = 1, kDark = 2, kHalfWhite = 3, kColumns = 4;

class ImageTintTest : public ::testing::Test {
 protected:
  void SetUp() override { kit::Screen::main().setScale(kScreenScale); }

  // A one-point-high strip: transparent, light grey, dark grey, white at half
  // alpha, drawn at the given scale.
  static Image sprite(double scale = kScreenScale) {
    kit::ImageContext context({kColumns, 1}, scale);
    context.fillRect({{kLight, 0}, {1, 1}}, {0.8, 0.8, 0.8, 1});
    context.fillRect({{kDark, 0}, {1, 1}}, {0.2, 0.2, 0.2, 1});
    context.fillRect({{kHalfWhite, 0}, {1, 1}}, {1, 1, 1, 0.5});
    return context.takeImage();
  }

  // The pixel at the middle of a column of an image drawn from the sprite.
  static Pixel at(const Image& image, int column) {
    double pointsToPixels = image.scale();
    return image.pixelAt(int((column + 0.5) * pointsToPixels), int(0.5 * pointsToPixels));
  }

  static void expectColor(Pixel p, int red, int green, int blue, int alpha) {
    EXPECT_NEAR(p.red, red, 1);
    EXPECT_NEAR(p.green, green, 1);
    EXPECT_NEAR(p.blue, blue, 1);
    EXPECT_NEAR(p.alpha, alpha, 1);
  }

  const Color tint{1, 0.2, 0.2, 1};
};

TEST_F(ImageTintTest, EveryModeKeepsTransparentAreasTransparentAndStaysInsideTheShape) {
  Image source = sprite();
  for (long number = 0; number <= 27; ++number) {
    SCOPED_TRACE(number);
    Image tinted = imageWithTintColor(source, tint, *kit::blendModeFromNumber(number));
    for (int y = 0; y < tinted.pixelHeight(); ++y) {
      for (int x = 0; x < tinted.pixelWidth(); ++x) {
        EXPECT_LE(tinted.pixelAt(x, y).alpha, source.pixelAt(x, y).alpha + 1) << x << "," << y;
      }
    }
    EXPECT_EQ(at(tinted, kTransparent), Pixel{});
  }
  EXPECT_EQ(at(imageWithTintColor(source, tint), kTransparent), Pixel{});
  EXPECT_EQ(at(imageWithGradientTintColor(source, tint), kTransparent), Pixel{});
}

TEST_F(ImageTintTest, FlatTintIsTheTintColourWithTheSourceAlpha) {
  Image tinted = imageWithTintColor(sprite(), tint);
  expectColor(at(tinted, kLight), 255, 51, 51, 255);
  expectColor(at(tinted, kDark), 255, 51, 51, 255);  // shading is gone
  expectColor(at(tinted, kHalfWhite), 255, 51, 51, 128);

  Image faint = imageWithTintColor(sprite(), tint.withAlpha(0.5));
  expectColor(at(faint, kLight), 255, 51, 51, 128);
  expectColor(at(faint, kHalfWhite), 255, 51, 51, 64);
}

TEST_F(ImageTintTest, GradientTintKeepsLightAndDarkShadingAndTheSourceAlpha) {
  Image tinted = imageWithGradientTintColor(sprite(), tint);
  Pixel light = at(tinted, kLight), dark = at(tinted, kDark);
  EXPECT_GE(light.red, dark.red);
  EXPECT_GT(light.green, dark.green);
  EXPECT_GT(light.blue, dark.blue);
  EXPECT_EQ(light.alpha, 255);
  EXPECT_EQ(dark.alpha, 255);
  EXPECT_NEAR(at(tinted, kHalfWhite).alpha, 128, 1);

  // Overlay over a mid grey gives back the tint: 2 × 0.2 × 0.5 = 0.2.
  kit::ImageContext grey({1, 1}, kScreenScale);
  grey.fillRect({{0, 0}, {1, 1}}, {128 / 255.0, 128 / 255.0, 128 / 255.0, 1});
  expectColor(imageWithGradientTintColor(grey.takeImage(), tint).pixelAt(0, 0), 255, 51, 51, 255);
}

TEST_F(ImageTintTest, ResultHasTheScreenScaleAndTheSourceSizeInPoints) {
  for (double scale : {1.0, 2.0, 3.0}) {
    SCOPED_TRACE(scale);
    Image source = sprite(scale);
    for (const Image& tinted :
         {imageWithTintColor(source, tint), imageWithGradientTintColor(source, tint)}) {
      EXPECT_EQ(tinted.scale(), kScreenScale);
      EXPECT_EQ(tinted.size(), source.size());
      EXPECT_EQ(tinted.pixelWidth(), kColumns * kScreenScale);
      // Each column lands on the same points, whatever the source's pixels
      // (a stretched source blurs the edge between columns, not the ends).
      EXPECT_EQ(tinted.pixelAt(0, 0), Pixel{});
      EXPECT_EQ(at(tinted, kLight).alpha, 255);
    }
  }
  kit::Screen::main().setScale(3);
  Image odd = Image::blank({5.0 / 3, 1}, 1.5);  // 2.5 pixels wide at its own scale
  Image tinted = imageWithTintColor(odd, tint);
  EXPECT_EQ(tinted.scale(), 3);
  EXPECT_EQ(tinted.size(), odd.size());
  EXPECT_EQ(tinted.pixelWidth(), 5);
}

TEST_F(ImageTintTest, ImageWithoutPixelsGivesAnEmptyImageOfTheSameSize) {
  Image empty = Image::blank({0, 3}, 1);
  Image tinted = imageWithGradientTintColor(empty, tint);
  EXPECT_EQ(tinted.size(), empty.size());
  EXPECT_EQ(tinted.pixelWidth(), 0);
}

}  // namespace
