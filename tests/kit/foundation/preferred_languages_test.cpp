#include "kit/foundation/preferred_languages.h"

#include <gtest/gtest.h>

#include "kit/foundation/bundle.h"
#include "kit/foundation/memory_preference_store.h"
#include "kit/foundation/user_defaults.h"
#include "kit/platform/backend.h"

namespace kit {
namespace {

TEST(PreferredLanguagesTest, LocalesBecomeLanguageCodesWithTheChineseScript) {
  EXPECT_EQ(languageCodeOf("zh_CN.UTF-8"), "zh-Hans-CN");
  EXPECT_EQ(languageCodeOf("zh_SG"), "zh-Hans-SG");
  EXPECT_EQ(languageCodeOf("zh-TW"), "zh-Hant-TW");
  EXPECT_EQ(languageCodeOf("zh_HK.big5@stroke"), "zh-Hant-HK");
  EXPECT_EQ(languageCodeOf("zh"), "zh-Hans");
  EXPECT_EQ(languageCodeOf("zh-hant"), "zh-Hant");
  EXPECT_EQ(languageCodeOf("EN_us"), "en-US");
  EXPECT_EQ(languageCodeOf("es-419"), "es-419");
  for (const char* bad : {"", "C", "POSIX", "C.UTF-8", "../en", "en_US_POSIX_x", "e1", "en-U$"})
    EXPECT_EQ(languageCodeOf(bad), std::nullopt) << bad;
}

TEST(PreferredLanguagesTest, LanguagesAreRegisteredNotStoredAndFallBackToTheDesktop) {
  MemoryPreferenceStore store;
  CapturingLog log;
  UserDefaults defaults(store, log);
  registerPreferredLanguages(defaults, "zh_CN");
  EXPECT_EQ(defaults.objectForKey("AppleLanguages"), Value(Value::Array{"zh-Hans-CN"}));
  EXPECT_EQ(defaults.storedValues().count("AppleLanguages"), 0u);

  // A choice that is no language falls back to the desktop's locales.
  registerPreferredLanguages(defaults, "C");
  EXPECT_EQ(defaults.objectForKey("AppleLanguages"), Value(Value::Array{"en"}));
  ::setenv("LANG", "en_GB.UTF-8", 1);
  ::setenv("LANGUAGE", "zh_CN:fr", 1);
  EXPECT_EQ(systemLanguages(), (std::vector<std::string>{"en-GB", "zh-Hans-CN", "fr"}));
  ::unsetenv("LANGUAGE");
  ::setenv("LANG", "C.UTF-8", 1);
}

}  // namespace
}  // namespace kit
