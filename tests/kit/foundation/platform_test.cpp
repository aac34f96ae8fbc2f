#include <gtest/gtest.h>

#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

TEST(TempDirTest, IsPrivateAndRemovedWithItsContentsUnlessKept) {
  fs::path gone, kept;
  {
    TempDir dir;
    gone = dir.path();
    EXPECT_EQ(fs::status(gone).permissions() & fs::perms::all, fs::perms::owner_all);
    fs::create_directories(gone / "a/b");
    TempDir moved(std::move(dir));
    EXPECT_EQ(moved.path(), gone);
    TempDir other("runner");
    kept = other.path();
    EXPECT_EQ(kept.filename().string().rfind("runner-", 0), 0u);
    other.keep();
  }
  EXPECT_FALSE(fs::exists(gone));
  EXPECT_TRUE(fs::is_directory(kept));
  fs::remove_all(kept);
}

TEST(HeadlessPlatformTest, WiresOneSetOfServices) {
  TempDir prefs;
  CapturingLog outer;
  {
    HeadlessPlatform platform(prefs.path(), TWINLANES_RESOURCES, &outer);
    Services s = platform.services();
    EXPECT_EQ(&s.defaults, &platform.defaults);
    EXPECT_EQ(&s.clock, &platform.clock);

    s.defaults.setObject(Value::Array{"zh-Hans"}, "AppleLanguages");
    EXPECT_EQ(s.bundle.preferredLanguages(), std::vector<std::string>{"zh-Hans"});
    EXPECT_EQ(s.bundle.infoValue("CFBundleIdentifier"), Value("org.twinlanes.TwinLanes"));

    int fired = 0;
    auto timer = s.runLoop.scheduledTimer(
        0.1, [&] { ++fired; }, false);
    platform.clock.advanceSeconds(0.1);
    s.runLoop.runOnce();
    EXPECT_EQ(fired, 1);

    EXPECT_TRUE(s.urlOpener.openURL("itms-apps://a/b"));
    EXPECT_EQ(platform.urlOpener.opened.size(), 1u);
    s.log.write("hello");
    EXPECT_TRUE(platform.log.contains("hello"));
  }
  EXPECT_TRUE(outer.contains("hello"));
  EXPECT_TRUE(fs::exists(prefs.path() / "prefs.json"));  // saved when the platform went
}

}  // namespace
}  // namespace kit
