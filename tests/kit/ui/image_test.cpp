#include "kit/ui/image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "kit/foundation/temp_dir.h"
#include "kit/ui/image_context.h"
#include "kit/ui/screen.h"

namespace kit {
namespace {

using Pixel = Image::Pixel;

// A 2x1 PNG without an alpha channel: one red pixel, one blue.
constexpr std::string_view kOpaqueRgbPng(
    "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x02\x00\x00"
    "\x00\x01\x08\x02\x00\x00\x00\x7b\x40\xe8\xdd\x00\x00\x00\x0d\x49\x44\x41\x54\x78\x9c\x63"
    "\xf8\xcf\x00\x04\xff\x01\x07\x00\x01\xff\xe2\x23\x9e\x59\x00\x00\x00\x00\x49\x45\x4e\x44"
    "\xae\x42\x60\x82",
    70);

// Compares in premultiplied 0..255 values, the form compositing formulas use.
void expectPremultiplied(Pixel p, double red, double green, double blue, double alpha) {
  double a = p.alpha / 255.0;
  EXPECT_NEAR(p.red * a, red, 2);
  EXPECT_NEAR(p.green * a, green, 2);
  EXPECT_NEAR(p.blue * a, blue, 2);
  EXPECT_NEAR(p.alpha, alpha, 2);
}

class ImageTest : public ::testing::Test {
 protected:
  void SetUp() override { Screen::main().setScale(2); }

  // A 2x2-point image of one colour at scale 1.
  static Image solid(const Color& color) {
    ImageContext context({2, 2}, 1);
    context.fillRect({{0, 0}, {2, 2}}, color);
    return context.takeImage();
  }

  // The one pixel left by drawing source over destination with mode.
  static Pixel compose(const Color& destination, const Color& source, BlendMode mode) {
    ImageContext context({1, 1}, 1);
    context.fillRect({{0, 0}, {1, 1}}, destination);
    context.drawImage(solid(source), {{0, 0}, {1, 1}}, mode);
    return context.takeImage().pixelAt(0, 0);
  }

  std::string file(const std::string& name) const { return (dir.path() / name).string(); }

  TempDir dir{"image-test"};
};

TEST_F(ImageTest, ContextHoldsPointsTimesScalePixels) {
  Image image = ImageContext({3, 1.5}, 0).takeImage();  // 0: the main screen's scale
  EXPECT_EQ(image.scale(), 2);
  EXPECT_EQ(image.pixelHeight(), 3);
  EXPECT_EQ(Image::blank({5.0 / 3, 1}, 2).pixelWidth(), 4);   // fractional pixels round up
  EXPECT_EQ(Image::blank({100, 10}, 1.1).pixelWidth(), 110);  // rounding noise does not
}

// Pixels are cleared lazily; drawing that blends must still find them clear.
// (Allocations are not zeroed; the address sanitizer fills them with garbage.)
TEST_F(ImageTest, FreshContextIsTransparentWhereverItIsNotDrawnAndFillsReplace) {
  ImageContext context({64, 64}, 1);
  context.drawImage(solid(Color::black()), {{0, 32}, {64, 32}}, BlendMode::DestinationOver);
  context.fillRect({{0, 0}, {32, 64}}, Color::white());
  context.fillRect({{0, 0}, {1, 1}}, Color{1, 0, 0, 0.5});   // replaces, does not blend
  context.fillRect({{1, 0}, {1, 1}}, Color{2, -1, NAN, 7});  // clamped
  Image image = context.takeImage();
  EXPECT_EQ(image.pixelAt(63, 0), Pixel{});
  EXPECT_EQ(image.pixelAt(63, 63), (Pixel{0, 0, 0, 255}));
  EXPECT_EQ(image.pixelAt(0, 1), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(image.pixelAt(0, 0), (Pixel{255, 0, 0, 128}));
  EXPECT_EQ(image.pixelAt(1, 0), (Pixel{255, 0, 0, 255}));
  EXPECT_EQ(image.pixelAt(64, 0), Pixel{});  // outside reads as transparent
}

TEST_F(ImageTest, UnusableSizesGiveImagesWithoutPixelsAndDrawingOnThemIsHarmless) {
  for (Size size : {Size{-1, 4}, Size{NAN, 1}, Size{INFINITY, 1}, Size{1e9, 1e9}, Size{0, 0}}) {
    ImageContext context(size, 1);
    context.fillRect({{0, 0}, {4, 4}}, Color::white());
    context.drawImage(solid(Color::black()), {{0, 0}, {4, 4}}, BlendMode::Overlay);
    Image image = context.takeImage();
    EXPECT_EQ(image.pixelWidth() * image.pixelHeight(), 0);
    EXPECT_EQ(image.pixelAt(0, 0), Pixel{});
  }
}

// Translucent source over a translucent destination of another colour, so
// that each compositing operator leaves a different pixel: every mode number
// must reach the operator it names.
TEST_F(ImageTest, PorterDuffModesFollowTheirFormulas) {
  const Color destination{1, 0, 0, 0.25}, source{0, 0, 1, 0.75};
  const double as = source.alpha, ad = destination.alpha;
  struct Case {
    BlendMode mode;
    double sourceFactor, destinationFactor;
  };
  const Case cases[] = {
      {BlendMode::Normal, 1, 1 - as},    {BlendMode::Clear, 0, 0},
      {BlendMode::SourceIn, ad, 0},      {BlendMode::DestinationOver, 1 - ad, 1},
      {BlendMode::DestinationIn, 0, as}, {BlendMode::DestinationAtop, 1 - ad, as},
      {BlendMode::Xor, 1 - ad, 1 - as},  {BlendMode::PlusLighter, 1, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.mode));
    double s = c.sourceFactor * 255 * as, d = c.destinationFactor * 255 * ad;
    expectPremultiplied(compose(destination, source, c.mode), d, 0, s, s + d);
  }
}

// An opaque light grey source (0.8) over a darker one (0.3), where each
// separable mode gives a different grey by its formula.
TEST_F(ImageTest, SeparableModesFollowTheirFormulas) {
  const std::pair<BlendMode, double> cases[] = {
      {BlendMode::Multiply, 0.24},    // s·d
      {BlendMode::Overlay, 0.48},     // d ≤ 0.5: 2·s·d
      {BlendMode::Lighten, 0.8},      // max
      {BlendMode::ColorBurn, 0.125},  // 1 - (1 - d) / s
      {BlendMode::Difference, 0.5},   // |s - d|
      {BlendMode::PlusDarker, 0.24},  // drawn as Multiply
  };
  for (const auto& [mode, grey] : cases) {
    Pixel p = compose({0.3, 0.3, 0.3, 1}, {0.8, 0.8, 0.8, 1}, mode);
    EXPECT_NEAR(p.red, grey * 255, 2.5) << static_cast<int>(mode);
    EXPECT_EQ(p.alpha, 255) << static_cast<int>(mode);
  }
}

// Hue takes the source's hue but keeps a grey destination's (zero) saturation.
TEST_F(ImageTest, NonSeparableModesTakeTheirOwnComponentsFromTheSource) {
  const Pixel hue = compose({0.5, 0.5, 0.5, 1}, {1, 0, 0, 1}, BlendMode::Hue);
  EXPECT_LE(std::abs(hue.red - hue.green) + std::abs(hue.green - hue.blue), 2);
  const Pixel luminosity = compose({1, 0, 0, 1}, {0.5, 0.5, 0.5, 1}, BlendMode::Luminosity);
  EXPECT_GT(luminosity.red, luminosity.green + 50);
}

TEST_F(ImageTest, DrawingTouchesOnlyTheTargetRectangleEvenForUnboundedModes) {
  for (BlendMode mode : {BlendMode::DestinationIn, BlendMode::SourceIn, BlendMode::Copy}) {
    ImageContext context({4, 1}, 1);
    context.fillRect({{0, 0}, {4, 1}}, Color::white());
    context.drawImage(Image::blank({1, 1}, 1), {{1, 0}, {2, 1}}, mode);
    Image image = context.takeImage();
    for (int x = 0; x < 4; ++x)
      EXPECT_EQ(image.pixelAt(x, 0).alpha, x == 0 || x == 3 ? 255 : 0) << static_cast<int>(mode);
  }
}

TEST_F(ImageTest, ImagesStretchWithoutFadingAtTheEdgesAndDrawAlphaScalesCoverage) {
  // 2x2 points at scale 1 into 2x2 points at scale 3: all 6x6 pixels opaque.
  ImageContext context({2, 2}, 3);
  context.drawImage(solid(Color{0, 1, 0, 1}), {{0, 0}, {2, 2}}, BlendMode::Normal);
  Image image = context.takeImage();
  ASSERT_EQ(image.pixelWidth(), 6);
  EXPECT_EQ(image.pixelAt(0, 0), (Pixel{0, 255, 0, 255}));
  EXPECT_EQ(image.pixelAt(5, 5), (Pixel{0, 255, 0, 255}));
  ImageContext faded({1, 1}, 1);
  faded.drawImage(solid(Color::white()), {{0, 0}, {1, 1}}, BlendMode::Normal, 0.5);
  expectPremultiplied(faded.takeImage().pixelAt(0, 0), 127.5, 127.5, 127.5, 127.5);
}

TEST_F(ImageTest, PngRoundTripKeepsPixelsAndTakesTheScaleGivenOnLoad) {
  ImageContext context({3, 1}, 1);
  context.fillRect({{0, 0}, {1, 1}}, Color{1, 0.5, 0, 1});
  context.fillRect({{1, 0}, {1, 1}}, Color{0, 0, 1, 0.5});
  Image original = context.takeImage();
  std::string error;
  ASSERT_TRUE(original.savePng(file("a.png"), &error)) << error;

  auto loaded = Image::loadPng(file("a.png"), 3, &error);
  ASSERT_TRUE(loaded) << error;
  EXPECT_EQ(loaded->size(), (Size{1, 1.0 / 3}));
  for (int x = 0; x < 3; ++x)
    EXPECT_EQ(loaded->pixelAt(x, 0), original.pixelAt(x, 0)) << x;

  auto opaque = Image::fromPngData(kOpaqueRgbPng);  // no alpha channel in the file
  ASSERT_TRUE(opaque);
  EXPECT_EQ(opaque->pixelAt(1, 0), (Pixel{0, 0, 255, 255}));
}

TEST_F(ImageTest, StraightPixelsComeInPremultipliedAndCopiesShareThem) {
  PixelBuffer straight{2, 1, {255, 128, 0, 255, 200, 100, 50, 51}};
  Image image = Image::fromPixels(straight, 2);
  EXPECT_EQ(image.size(), (Size{1, 0.5}));
  EXPECT_EQ(image.pixelAt(0, 0), (Pixel{255, 128, 0, 255}));
  expectPremultiplied(image.pixelAt(1, 0), 40, 20, 10, 51);
  EXPECT_EQ(image.bitmap().pixels[1], 0x3328140au) << "premultiplied ARGB in memory";
  Image copy = image;
  EXPECT_EQ(copy.bitmap().pixels.get(), image.bitmap().pixels.get());

  PixelBuffer shortOfBytes{2, 2, std::vector<uint8_t>(12)};
  EXPECT_EQ(Image::fromPixels(shortOfBytes).pixelWidth(), 0);
  EXPECT_EQ(Image::fromPixels(PixelBuffer{}).pixelHeight(), 0);
}

TEST_F(ImageTest, BadPngInputAndFailedSavesAreRefusedWithAReason) {
  std::string huge(kOpaqueRgbPng);
  huge[16] = 0x7f;  // a width of about two billion in the header
  const std::string cases[] = {"", "hello, this is not an image",
                               std::string(kOpaqueRgbPng.substr(0, 8)),
                               std::string(kOpaqueRgbPng.substr(0, 45)), huge};
  for (const auto& bytes : cases) {
    std::string error;
    EXPECT_FALSE(Image::fromPngData(bytes, 1, &error)) << bytes.size();
    EXPECT_FALSE(error.empty()) << bytes.size();
  }
  std::string error;
  EXPECT_FALSE(Image::loadPng(file("missing.png"), 1, &error));
  EXPECT_NE(error.find("missing.png"), std::string::npos) << error;

  EXPECT_FALSE(solid(Color::white()).savePng(file("no/such/folder/a.png"), &error));
  EXPECT_NE(error.find("a.png"), std::string::npos) << error;
  EXPECT_FALSE(Image::blank({0, 0}, 1).savePng(file("empty.png"), &error));
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

}  // namespace
}  // namespace kit
