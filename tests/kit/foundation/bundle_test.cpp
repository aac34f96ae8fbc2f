#include "kit/foundation/bundle.h"

#include <gtest/gtest.h>

#include <fstream>

#include "kit/foundation/json.h"
#include "kit/foundation/temp_dir.h"
#include "kit/foundation/user_defaults.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

class BundleTest : public ::testing::Test {
 protected:
  BundleTest() { put("publisher.json", R"({"CFBundleVersion": "2.0"})"); }

  void put(const fs::path& relative, const std::string& bytes) {
    fs::create_directories((dir.path() / relative).parent_path());
    std::ofstream(dir.path() / relative, std::ios::binary) << bytes;
  }
  void addTable(const std::string& name, const std::string& lang, const Value::Dictionary& texts) {
    put("strings/" + name + "." + lang + ".json", toJson(Value(texts)));
  }
  void preferLanguages(Value::Array codes) { prefs.setObject(Value(codes), "AppleLanguages"); }
  std::string text(const std::string& key, const std::string& table = "RTService") {
    return bundle().localizedString(key, "", table);
  }
  Bundle& bundle() {
    if (!bundle_)
      bundle_ = std::make_unique<Bundle>(dir.path(), &prefs, log);
    return *bundle_;
  }

  TempDir dir;
  CapturingLog log;
  UserDefaults prefs{{}, log};
  std::unique_ptr<Bundle> bundle_;
};

TEST_F(BundleTest, ImagesAreFoundByStemAndAnSvgWins) {
  put("images/car.svg", "<svg/>");
  put("images/car.png", "png");
  put("images/bg.png", "png");
  put("images/fire1.svg", "<svg/>");
  EXPECT_EQ(bundle().pathForImage("car"), dir.path() / "images/car.svg");
  EXPECT_EQ(bundle().pathForImage("car.png"), dir.path() / "images/car.svg");
  EXPECT_EQ(bundle().pathForImage("bg.png"), dir.path() / "images/bg.png");
  EXPECT_EQ(bundle().pathForImage("bg"), dir.path() / "images/bg.png");
  EXPECT_EQ(bundle().pathForImage("fire1"), dir.path() / "images/fire1.svg");
  for (const char* missing : {"fire2", "", ".png", "../images/car", "images/car", ".."}) {
    EXPECT_EQ(bundle().pathForImage(missing), std::nullopt) << missing;
  }
}

TEST_F(BundleTest, ResourcePathsStayInsideTheFolder) {
  put("layout/main.json", "{}");
  EXPECT_EQ(bundle().pathForResource("layout/main.json"), dir.path() / "layout/main.json");
  for (const char* refused : {"layout/none.json", "", "/etc/passwd", "../x", "layout/../../x"}) {
    EXPECT_EQ(bundle().pathForResource(refused), std::nullopt) << refused;
  }
}

TEST_F(BundleTest, LanguagesFallBackThroughShorterCodesThenEnglish) {
  addTable("RTService", "en", {{"RATE_YES", "Rate it"}, {"RATE_NO", "No thanks"}});
  addTable("RTService", "zh-Hans", {{"RATE_YES", "\xe5\xa5\xbd"}});
  addTable("RTService", "zh", {{"RATE_YES", "zh"}});
  addTable("RTService", "fr-CA", {{"RATE_YES", "Oui"}});

  preferLanguages({"zh-Hans-CN", "en"});
  EXPECT_EQ(text("RATE_YES"), "\xe5\xa5\xbd");
  EXPECT_EQ(text("RATE_NO"), "No thanks");  // not translated: English, not the key

  bundle_.reset();
  preferLanguages({"zh-Hant-TW"});
  EXPECT_EQ(text("RATE_YES"), "zh");

  bundle_.reset();
  preferLanguages({"de", "fr_CA"});
  EXPECT_EQ(text("RATE_YES"), "Oui");

  bundle_.reset();
  preferLanguages({"de"});
  EXPECT_EQ(text("RATE_YES"), "Rate it");

  prefs.removeObjectForKey("AppleLanguages");
  EXPECT_EQ(bundle().preferredLanguages(), std::vector<std::string>{"en"});
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(BundleTest, MissingTextGivesTheValueOrElseTheKey) {
  addTable("RTService", "en", {{"RATE_YES", "Rate it"}, {"COUNT", 3}, {"LIST", Value::Array{}}});
  EXPECT_EQ(bundle().localizedString("NOPE", "fallback", "RTService"), "fallback");
  EXPECT_EQ(text("NOPE"), "NOPE");
  EXPECT_EQ(text("COUNT"), "3");
  EXPECT_EQ(text("LIST"), "LIST");
}

TEST_F(BundleTest, BrokenOrMissingTablesAreLoggedOnceAndFallBack) {
  put("strings/RTService.zh-Hans.json", "{\"RATE_YES\": ");
  addTable("RTService", "en", {{"RATE_YES", "Rate it"}});
  preferLanguages({"zh-Hans"});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(text("RATE_YES"), "Rate it");
    EXPECT_EQ(text("Ghost", "Nowhere"), "Ghost");
  }
  const auto lines = log.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[0].find("RTService.zh-Hans.json"), std::string::npos) << lines[0];
  EXPECT_NE(lines[1].find("Nowhere"), std::string::npos) << lines[1];
}

TEST_F(BundleTest, LanguageCodesFromPreferencesCannotLeaveTheStringsFolder) {
  put("secret.en.json", R"({"RATE_YES": "leaked"})");
  addTable("RTService", "en", {{"RATE_YES", "Rate it"}});
  preferLanguages({"../secret", "/etc/x", 12, "zh-Hans"});
  EXPECT_EQ(bundle().preferredLanguages(), std::vector<std::string>{"zh-Hans"});
  EXPECT_EQ(text("RATE_YES"), "Rate it");
  EXPECT_EQ(text("RATE_YES", "../secret"), "RATE_YES");
}

TEST(BundleLanguagesTest, DesktopLocalesBecomeLanguageCodes) {
  ::unsetenv("LANGUAGE");
  ::setenv("LANG", "zh_TW.UTF-8", 1);
  EXPECT_EQ(Bundle::desktopLanguages(), std::vector<std::string>{"zh-Hant-TW"});
  ::setenv("LANG", "en_GB.UTF-8", 1);
  ::setenv("LANGUAGE", "zh_CN:fr", 1);
  EXPECT_EQ(Bundle::desktopLanguages(), (std::vector<std::string>{"en-GB", "zh-Hans-CN", "fr"}));
  ::unsetenv("LANGUAGE");
  ::setenv("LANG", "C.UTF-8", 1);
  EXPECT_TRUE(Bundle::desktopLanguages().empty());
}

TEST_F(BundleTest, InfoValuesComeFromThePublisherConfig) {
  Bundle real(TWINLANES_RESOURCES, nullptr, log);
  EXPECT_EQ(real.infoValue("CFBundleVersion"), Value("1.0"));
  EXPECT_EQ(real.infoValue("CFBundleDisplayName"), Value("Twin Lanes"));
  const Value id = real.infoValue("appStoreId");
  ASSERT_TRUE(id.ifInteger());
  EXPECT_EQ(std::to_string(*id.ifInteger()).size(), 10u);
  EXPECT_TRUE(real.infoValue("nothing").isNil());
  EXPECT_TRUE(log.lines().empty());

  EXPECT_EQ(bundle().infoValue("CFBundleVersion"), Value("2.0"));
  fs::remove(dir.path() / "publisher.json");
  Bundle none(dir.path(), nullptr, log);
  EXPECT_TRUE(none.infoValue("CFBundleVersion").isNil());
  EXPECT_EQ(log.lines().size(), 1u);
  put("publisher.json", "[1]");
  Bundle wrong(dir.path(), nullptr, log);
  EXPECT_TRUE(wrong.infoValue("CFBundleVersion").isNil());
  EXPECT_EQ(log.lines().size(), 2u);
}

}  // namespace
}  // namespace kit
