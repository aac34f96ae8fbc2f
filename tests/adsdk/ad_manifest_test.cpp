#include "adsdk/ad_manifest.h"

#include <gmock/gmock.h>

#include "adsdk/creative_source.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/svg_image.h"

#include <fstream>
#include <iterator>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const std::string kEntry =
    R"({"name": "a", "url": "https://x.example/a", "images": [{"file": "a.svg", "width": 3, "height": 5}]})";
const std::string kRect = R"(<rect width="8" height="4" fill="#ef4a3c"/></svg>)";

TEST(AdManifest, RefusesWhatIsNotAJsonObject) {
  for (const char* text : {"", "not json", "[1, 2]", "{\"banners\": [", "\xff\xfe"}) {
    const auto manifest = AdManifest::parse(text);
    ASSERT_FALSE(manifest) << text;
    EXPECT_FALSE(manifest.error().empty());
  }
}

TEST(AdManifest, LeavesOutBadEntriesAndSaysWhy) {
  const std::string image = R"(, "images": [{"file": "a.svg", "width": 1, "height": 1}]})";
  const std::string bad[] = {
      R"x({"name": "n", "url": "javascript:alert(1)")x" + image,
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "../../etc/passwd", "width": 1, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "a.svg", "width": "320", "height": 1}]})",
  };
  for (const std::string& entry : bad) {
    std::vector<std::string> warnings;
    auto manifest = AdManifest::parse(R"({"banners": [)" + kEntry + "," + entry + "]}", &warnings);
    ASSERT_TRUE(manifest) << entry;
    EXPECT_EQ(manifest->banners.size(), 1u) << entry;
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("banners[1] left out"))) << entry;
  }
}

TEST(DecodePicture, RefusesBrokenOrForeignBytesAndSvgsWithoutASize) {
  for (const std::string& bytes :
       {std::string(), std::string("\x89PNG\r\n\x1a\n broken", 16), std::string("<svg nonsense"),
        std::string(600 * 1024, '<'), "<svg stroke-width=\"8\" height=\"4\">" + kRect}) {
    std::string error;
    EXPECT_FALSE(decodePicture(bytes, {320, 50}, 1, &error)) << bytes.substr(0, 16);
    EXPECT_FALSE(error.empty());
  }
  std::string error;
  EXPECT_FALSE(decodePicture("<svg viewBox=\"0 0 8\">" + kRect, {8, 4}, 1, &error));
  EXPECT_THAT(error, HasSubstr("no <svg> element with a size"));
}

// A PNG header: signature and IHDR claiming `width` x `height`, no pixels.
std::string pngHeader(uint32_t width, uint32_t height) {
  std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16);
  for (uint32_t v : {width, height}) {
    for (int shift = 24; shift >= 0; shift -= 8)
      bytes += static_cast<char>((v >> shift) & 0xff);
  }
  return bytes + std::string("\x08\x06\0\0\0", 5) + std::string(4, '\0');
}

std::string pngOf(kit::Size pixels) {
  kit::TempDir dir;
  const auto file = (dir.path() / "p.png").string();
  EXPECT_TRUE(kit::Image::blank(pixels, 1).savePng(file));
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A 275 KB PNG of 8192 x 8192 cost about 1 GB decoded at full size, and the
// frame that first drew it stalled for more than a second.
TEST(DecodePicture, PngsAreDecodedAtTheSizeDrawnAndRefusedBeyondThePixelLimit) {
  std::string error;
  EXPECT_FALSE(decodePicture(pngHeader(8192, 8192), {320, 50}, 2, &error));
  EXPECT_THAT(error, HasSubstr("8192 x 8192 pixels, more than the limit of 16777216 pixels"));
  EXPECT_FALSE(decodePicture(pngHeader(4097, 4096), {320, 50}, 2, &error));

  // Larger than drawn: scaled down before it leaves the worker.
  auto big = decodePicture(pngOf({2000, 1000}), {320, 160}, 2, &error);
  ASSERT_TRUE(big) << error;
  EXPECT_EQ(big->pixelWidth(), 640);
  EXPECT_EQ(big->pixelHeight(), 320);
  EXPECT_NEAR(big->size().width, 320, 0.5);
  // Smaller than drawn: kept as it is.
  auto small = decodePicture(pngOf({100, 50}), {320, 160}, 2, &error);
  ASSERT_TRUE(small) << error;
  EXPECT_EQ(small->pixelWidth(), 100);
}

// Interstitials at --scale 8 asked for pictures beyond the SVG reader's
// 4,096-pixel side and never loaded, although the window scale allows 8.
TEST(DecodePicture, PicturesDrawAtEveryWindowScaleWithinThePixelLimits) {
  const std::string svg = R"(<svg viewBox="0 0 8 4">)" + kRect;
  for (kit::Size size : {kit::Size{320, 568}, kit::Size{768, 1024}, kit::Size{1e6, 1e6}}) {
    for (double scale : {2.0, 8.0}) {
      std::string error;
      auto image = decodePicture(svg, size, scale, &error);
      ASSERT_TRUE(image) << size.width << " at " << scale << ": " << error;
      EXPECT_LE(image->pixelWidth(), kit::kMaxSvgPixelSide);
      EXPECT_LE(image->pixelHeight(), kit::kMaxSvgPixelSide);
      EXPECT_LE(int64_t(image->pixelWidth()) * image->pixelHeight(), kMaxPicturePixels);
      // The shape of the drawing (2:1) fitted into the size asked for.
      EXPECT_NEAR(image->size().width, std::min(size.width, size.height * 2), size.width * 0.01);
    }
  }
}

}  // namespace
