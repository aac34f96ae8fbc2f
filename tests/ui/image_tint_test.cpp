#include "ui/image_tint.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "kit/ui/image_context.h"
#include "kit/ui/screen.h"

namespace {

using kit::Image;
using Pixel = kit::Image::Pixel;

// Columns of the test sprite, one point wide each.
constexpr int kTransparent = 0, kLight = 1, kDark = 2, kHalfWhite = 3;

class ImageTintTest : public ::testing::Test {
 protected:
  void SetUp() override { kit::Screen::main().setScale(2); }
  void TearDown() override { kit::Screen::main().setScale(kit::Screen::kDefaultScale); }

  // A strip of one-point columns: clear, light grey, dark grey, half white.
  static Image sprite(double scale = 2) {
    kit::ImageContext context({4, 1}, scale);
    context.fillRect({{kLight, 0}, {1, 1}}, {0.8, 0.8, 0.8, 1});
    context.fillRect({{kDark, 0}, {1, 1}}, {0.2, 0.2, 0.2, 1});
    context.fillRect({{kHalfWhite, 0}, {1, 1}}, {1, 1, 1, 0.5});
    return context.takeImage();
  }

  // The pixel at the middle of a column of an image drawn from the sprite.
  static Pixel at(const Image& image, int column) {
    return image.pixelAt(int((column + 0.5) * image.scale()), int(0.5 * image.scale()));
  }

  static void expectColor(Pixel p, int red, int green, int blue, int alpha) {
    EXPECT_LE(std::abs(p.red - red) + std::abs(p.green - green) + std::abs(p.blue - blue), 3);
    EXPECT_NEAR(p.alpha, alpha, 1);
  }

  const kit::Color tint{1, 0.2, 0.2, 1};
};

TEST_F(ImageTintTest, EveryModeKeepsTransparentAreasTransparentAndStaysInsideTheShape) {
  Image source = sprite();
  for (long number = 0; number <= 27; ++number) {
    Image tinted = imageWithTintColor(source, tint, *kit::blendModeFromNumber(number));
    for (int x = 0; x < tinted.pixelWidth(); ++x)
      EXPECT_LE(tinted.pixelAt(x, 1).alpha, source.pixelAt(x, 1).alpha + 1) << number << "," << x;
    EXPECT_EQ(at(tinted, kTransparent), Pixel{}) << number;
  }
  EXPECT_EQ(at(imageWithGradientTintColor(source, tint), kTransparent), Pixel{});
}

TEST_F(ImageTintTest, FlatTintIsTheTintColourWithTheSourceAlpha) {
  Image tinted = imageWithTintColor(sprite(), tint);
  expectColor(at(tinted, kLight), 255, 51, 51, 255);
  expectColor(at(tinted, kDark), 255, 51, 51, 255);  // shading is gone
  expectColor(at(tinted, kHalfWhite), 255, 51, 51, 128);
  expectColor(at(imageWithTintColor(sprite(), tint.withAlpha(0.5)), kHalfWhite), 255, 51, 51, 64);
}

TEST_F(ImageTintTest, GradientTintKeepsLightAndDarkShadingAndTheSourceAlpha) {
  Image tinted = imageWithGradientTintColor(sprite(), tint);
  EXPECT_GT(at(tinted, kLight).green, at(tinted, kDark).green);
  EXPECT_EQ(at(tinted, kDark).alpha, 255);
  EXPECT_NEAR(at(tinted, kHalfWhite).alpha, 128, 1);
  // Overlay over a mid grey gives back the tint: 2 × 0.2 × 0.5 = 0.2.
  kit::ImageContext grey({1, 1}, 2);
  grey.fillRect({{0, 0}, {1, 1}}, {128 / 255.0, 128 / 255.0, 128 / 255.0, 1});
  expectColor(imageWithGradientTintColor(grey.takeImage(), tint).pixelAt(0, 0), 255, 51, 51, 255);
}

TEST_F(ImageTintTest, ResultHasTheScreenScaleAndTheSourceSizeInPoints) {
  for (const Image& tinted :
       {imageWithTintColor(sprite(1), tint), imageWithGradientTintColor(sprite(3), tint)}) {
    EXPECT_EQ(tinted.scale(), 2);
    EXPECT_EQ(tinted.pixelWidth(), 8);
    EXPECT_EQ(tinted.pixelAt(0, 0), Pixel{}) << "columns land on the same points";
    EXPECT_EQ(at(tinted, kLight).alpha, 255);
  }
  kit::Screen::main().setScale(3);
  Image odd = Image::blank({5.0 / 3, 1}, 1.5);  // 2.5 pixels wide at its own scale
  EXPECT_EQ(imageWithTintColor(odd, tint).pixelWidth(), 5);
  Image empty = imageWithGradientTintColor(Image::blank({0, 3}, 1), tint);
  EXPECT_EQ(empty.size(), (kit::Size{0, 3}));
}

}  // namespace
