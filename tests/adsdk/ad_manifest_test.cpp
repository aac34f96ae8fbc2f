#include "adsdk/ad_manifest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adsdk/creative_source.h"
#include "kit/foundation/read_file.h"

namespace {

using ::testing::HasSubstr;

const char* kEntry = R"({"name": "a", "url": "https://www.twinlanes.example/a",
                         "images": [{"file": "a.svg", "width": 320, "height": 50}]})";

std::string manifestWith(const std::string& banner) {
  return std::string(R"({"banners": [)") + kEntry + "," + banner + "]}";
}

TEST(AdManifest, ReadsEntriesOfBothFormats) {
  std::string error;
  auto manifest = AdManifest::parse(
      std::string(R"({"banners": [)") + kEntry + R"(], "interstitials": [)" + kEntry + "]}",
      &error);
  ASSERT_TRUE(manifest) << error;
  ASSERT_EQ(manifest->banners.size(), 1u);
  EXPECT_EQ(manifest->interstitials.size(), 1u);
  EXPECT_EQ(manifest->banners[0].clickURL, "https://www.twinlanes.example/a");
  EXPECT_EQ(manifest->banners[0].pictures[0].size, (kit::Size{320, 50}));
}

TEST(AdManifest, RefusesWhatIsNotAJsonObject) {
  for (const char* text :
       {"", "not json", "[1, 2]", "\"banners\"", "{\"banners\": [", "\xff\xfe"}) {
    std::string error;
    EXPECT_FALSE(AdManifest::parse(text, &error)) << text;
    EXPECT_FALSE(error.empty());
  }
}

TEST(AdManifest, LeavesOutBadEntriesAndSaysWhy) {
  const char* bad[] = {
      R"("just text")",
      R"({"url": "https://x.example/", "images": [{"file": "a.svg", "width": 1, "height": 1}]})",
      R"x({"name": "n", "url": "javascript:alert(1)", "images": [{"file": "a.svg", "width": 1, "height": 1}]})x",
      R"({"name": "n", "url": "file:///etc/passwd", "images": [{"file": "a.svg", "width": 1, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/a b", "images": [{"file": "a.svg", "width": 1, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/", "images": []})",
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "../../etc/passwd", "width": 1, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "/etc/passwd", "width": 1, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "a.svg", "width": 0, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "a.svg", "width": 1e9, "height": 1}]})",
      R"({"name": "n", "url": "https://x.example/", "images": [{"file": "a.svg", "width": "320", "height": 1}]})",
  };
  for (const char* entry : bad) {
    std::vector<std::string> warnings;
    auto manifest = AdManifest::parse(manifestWith(entry), nullptr, &warnings);
    ASSERT_TRUE(manifest) << entry;
    EXPECT_EQ(manifest->banners.size(), 1u) << entry;
    ASSERT_EQ(warnings.size(), 1u) << entry;
    EXPECT_THAT(warnings[0], HasSubstr("banners[1] left out")) << entry;
  }
}

TEST(AdManifest, OnlyPlainRelativeFilesAreSafe) {
  for (const char* ok : {"a.svg", "ads/a-1_b.png", "x/y/z.svg"})
    EXPECT_TRUE(AdManifest::isSafeFile(ok)) << ok;
  for (const char* no : {"", "/a.svg", "a/", "a//b.svg", "./a.svg", "a/../b.svg", "..", "a b.svg",
                         "a\\b.svg", "http://x/a.svg", "a%2e.svg"})
    EXPECT_FALSE(AdManifest::isSafeFile(no)) << no;
}

TEST(AdManifest, PicksThePictureShapedMostLikeTheSlot) {
  AdManifest::Entry entry{
      "e",
      "https://x.example/",
      {{"phone", {320, 50}}, {"pad", {728, 90}}, {"tall", {320, 568}}, {"tall-big", {768, 1024}}}};
  EXPECT_EQ(AdManifest::pictureFor(entry, {320, 50}).file, "phone");
  EXPECT_EQ(AdManifest::pictureFor(entry, {768, 90}).file, "pad");
  EXPECT_EQ(AdManifest::pictureFor(entry, {375, 667}).file, "tall");
  EXPECT_EQ(AdManifest::pictureFor(entry, {768, 1024}).file, "tall-big");
}

TEST(DecodePicture, DrawsSvgToFitAndReadsPng) {
  std::string error;
  const std::string svg =
      R"(<svg xmlns="http://www.w3.org/2000/svg" width="32" height="5"><rect width="32" height="5" fill="#ef4a3c"/></svg>)";
  auto image = decodePicture(svg, {320, 50}, 2, &error);
  ASSERT_TRUE(image) << error;
  EXPECT_EQ(image->pixelWidth(), 640);
  EXPECT_EQ(image->pixelHeight(), 100);
  EXPECT_EQ(image->size(), (kit::Size{320, 50}));
  EXPECT_EQ(image->pixelAt(320, 50), (kit::Image::Pixel{0xef, 0x4a, 0x3c, 0xff}));

  auto png =
      kit::readSmallFile(std::string(TWINLANES_RESOURCES) + "/icons/twinlanes-256.png", 1 << 20);
  ASSERT_TRUE(png);
  auto decoded = decodePicture(*png, {10, 10}, 1, &error);
  ASSERT_TRUE(decoded) << error;
  EXPECT_EQ(decoded->pixelWidth(), 256);
}

TEST(DecodePicture, RefusesBrokenOrForeignBytes) {
  for (const std::string& bytes :
       {std::string(), std::string("GIF89a....."), std::string("\x89PNG\r\n\x1a\n broken", 16),
        std::string("<svg nonsense"), std::string(600 * 1024, '<')}) {
    std::string error;
    EXPECT_FALSE(decodePicture(bytes, {320, 50}, 1, &error)) << bytes.substr(0, 16);
    EXPECT_FALSE(error.empty());
  }
  std::string error;
  EXPECT_FALSE(decodePicture(R"(<svg xmlns="http://www.w3.org/2000/svg" width="1" height="1"/>)",
                             {1e6, 1e6}, 2, &error));
}

TEST(DecodePicture, AnSvgMustGiveItsSizeOrViewBox) {
  std::string error;
  const std::string shape = R"(<rect width="8" height="4" fill="#1fbfae"/></svg>)";
  EXPECT_TRUE(decodePicture(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 8 4">)" + shape,
                            {80, 40}, 1, &error))
      << error;
  EXPECT_TRUE(decodePicture(R"(<svg stroke-width="3" width='8' height = "4px">)" + shape, {80, 40},
                            1, &error))
      << error;
  for (const char* root :
       {R"(<svg xmlns="http://www.w3.org/2000/svg">)", R"(<svg stroke-width="8" height="4">)",
        R"(<svg width="0" height="4">)", R"(<svg viewBox="0 0 8">)"}) {
    EXPECT_FALSE(decodePicture(std::string(root) + shape, {80, 40}, 1, &error)) << root;
    EXPECT_THAT(error, HasSubstr("no <svg> element with a size"));
  }
}

}  // namespace
