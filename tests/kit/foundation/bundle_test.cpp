#include "kit/foundation/bundle.h"

#include <gtest/gtest.h>

#include "kit/backends/files/file_resource_store.h"
#include "kit/foundation/json.h"
#include "kit/foundation/memory_preference_store.h"
#include "kit/foundation/memory_resource_store.h"
#include "kit/foundation/user_defaults.h"
#include "kit/platform/backend.h"

namespace kit {
namespace {

class BundleTest : public ::testing::Test {
 protected:
  BundleTest() { put("publisher.json", R"({"CFBundleVersion": "2.0"})"); }

  void put(const std::string& name, const std::string& bytes) { resources.add(name, bytes); }
  void addTable(const std::string& name, const std::string& lang, const Value::Dictionary& texts) {
    put("strings/" + name + "." + lang + ".json", toJson(Value(texts)));
  }
  void preferLanguages(Value::Array codes) { prefs.setObject(Value(codes), "AppleLanguages"); }
  std::string text(const std::string& key, const std::string& table = "RTService") {
    return bundle().localizedString(key, "", table);
  }
  Bundle& bundle() {
    if (!bundle_)
      bundle_ = std::make_unique<Bundle>(resources, &prefs, log);
    return *bundle_;
  }

  MemoryResourceStore resources;
  CapturingLog log;
  MemoryPreferenceStore store;
  UserDefaults prefs{store, log};
  std::unique_ptr<Bundle> bundle_;
};

TEST_F(BundleTest, ImagesAreFoundByNameWithOrWithoutExtensionAndAnSvgWins) {
  put("images/car.svg", "<svg/>");
  put("images/car.png", "png");
  put("images/bg.png", "png");
  put("images/sub/car.svg", "<svg/>");
  EXPECT_EQ(bundle().imageResource("car"), "images/car.svg");
  EXPECT_EQ(bundle().imageResource("car.png"), "images/car.svg");
  EXPECT_EQ(bundle().imageResource("bg"), "images/bg.png");
  EXPECT_EQ(bundle().imageResource("bg.png"), "images/bg.png");
  for (const char* missing : {"fire2", "", ".png", "../images/car", "images/car", "sub/car"})
    EXPECT_EQ(bundle().imageResource(missing), std::nullopt) << missing;
}

TEST_F(BundleTest, LanguagesFallBackThroughShorterCodesThenEnglishThenTheKey) {
  addTable("RTService", "en", {{"RATE_YES", "Rate it"}, {"RATE_NO", "No thanks"}, {"COUNT", 3}});
  addTable("RTService", "zh-Hans", {{"RATE_YES", "\xe5\xa5\xbd"}});
  addTable("RTService", "zh", {{"RATE_YES", "zh"}});
  addTable("RTService", "fr-CA", {{"RATE_YES", "Oui"}});
  put("secret.en.json", R"({"RATE_YES": "leaked"})");
  const std::pair<Value::Array, const char*> cases[] = {{{"zh-Hans-CN", "en"}, "\xe5\xa5\xbd"},
                                                        {{"zh-Hant-TW"}, "zh"},
                                                        {{"de", "fr_CA"}, "Oui"},
                                                        {{"de"}, "Rate it"},
                                                        {{"../secret", "/etc/x", 12}, "Rate it"}};
  for (const auto& [languages, expected] : cases) {
    bundle_.reset();
    preferLanguages(languages);
    EXPECT_EQ(text("RATE_YES"), expected);
  }
  EXPECT_EQ(text("RATE_NO"), "No thanks");  // not translated: English, not the key
  EXPECT_EQ(text("COUNT"), "3");            // a number reads as its text
  EXPECT_EQ(bundle().localizedString("NOPE", "fallback", "RTService"), "fallback");
  EXPECT_EQ(text("NOPE"), "NOPE");
  EXPECT_EQ(text("RATE_YES", "../secret"), "RATE_YES");
  prefs.removeObjectForKey("AppleLanguages");
  EXPECT_EQ(bundle().preferredLanguages(), std::vector<std::string>{"en"});
}

TEST_F(BundleTest, LanguageCodesFindTheirTableWhateverCaseTheyAreWrittenIn) {
  addTable("RTService", "en", {{"RATE_YES", "Rate it"}});
  addTable("RTService", "zh-Hans", {{"RATE_YES", "\xe5\xa5\xbd"}});
  for (const char* code : {"ZH-HANS", "zh-hans", "ZH_CN"}) {
    bundle_.reset();
    preferLanguages({code});
    EXPECT_EQ(text("RATE_YES"), "\xe5\xa5\xbd") << code;
  }
  ::setenv("LANG", "ZH_CN.UTF-8", 1);
  EXPECT_EQ(systemLanguages(), std::vector<std::string>{"zh-Hans-CN"});
  ::setenv("LANG", "C.UTF-8", 1);
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

TEST_F(BundleTest, InfoValuesComeFromThePublisherConfig) {
  FileResourceStore files(TWINLANES_RESOURCES);
  Bundle real(files, nullptr, log);
  EXPECT_EQ(real.infoValue("CFBundleDisplayName"), Value("Twin Lanes"));
  const Value id = real.infoValue("appStoreId");
  ASSERT_TRUE(id.ifInteger());
  EXPECT_EQ(std::to_string(*id.ifInteger()).size(), 10u);
  EXPECT_TRUE(real.infoValue("nothing").isNil());
  EXPECT_TRUE(log.lines().empty());

  EXPECT_EQ(bundle().infoValue("CFBundleVersion"), Value("2.0"));
  put("publisher.json", "[1]");
  Bundle wrong(resources, nullptr, log);
  EXPECT_TRUE(wrong.infoValue("CFBundleVersion").isNil());
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0], "Publisher config " + resources.location("publisher.json") +
                                " is not a JSON object; bundle info values are empty");
}

}  // namespace
}  // namespace kit
