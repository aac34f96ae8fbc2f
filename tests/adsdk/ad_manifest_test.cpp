#include "adsdk/ad_manifest.h"

#include <gmock/gmock.h>

#include "adsdk/creative_source.h"

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
  EXPECT_FALSE(decodePicture("<svg width=\"1\" height=\"1\"/>", {1e6, 1e6}, 2, &error));
  EXPECT_FALSE(decodePicture("<svg viewBox=\"0 0 8\">" + kRect, {8, 4}, 1, &error));
  EXPECT_THAT(error, HasSubstr("no <svg> element with a size"));
}

}  // namespace
