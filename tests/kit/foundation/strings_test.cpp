// The shared text helpers: ASCII-only case folding and hex digits.

#include "kit/foundation/strings.h"

#include <gtest/gtest.h>

namespace kit {
namespace {

TEST(Strings, CaseIsFoldedForAsciiLettersOnly) {
  EXPECT_TRUE(startsWithIgnoringCase("HTTPS://x.example", "https://"));
  EXPECT_TRUE(endsWithIgnoringCase("Title.PNG", ".png"));
  EXPECT_TRUE(equalsIgnoringCase("Center", "cEnTeR"));
  // Bytes outside A-Z are compared as they are, whatever the locale says.
  EXPECT_FALSE(equalsIgnoringCase("\xC3\x89", "\xC3\xA9"));
  EXPECT_FALSE(equalsIgnoringCase("[", "{"));
}

TEST(Strings, APrefixOrSuffixLongerThanTheTextNeverMatches) {
  EXPECT_FALSE(startsWithIgnoringCase("http", "http://"));
  EXPECT_FALSE(endsWithIgnoringCase("png", ".png"));
  EXPECT_TRUE(startsWithIgnoringCase("", ""));
  EXPECT_FALSE(equalsIgnoringCase("top", "to"));
}

TEST(Strings, HexDigitsInEitherCaseAndNothingElse) {
  EXPECT_EQ(hexDigitValue('0'), 0);
  EXPECT_EQ(hexDigitValue('9'), 9);
  EXPECT_EQ(hexDigitValue('a'), 10);
  EXPECT_EQ(hexDigitValue('F'), 15);
  for (char c : {'g', 'G', '/', ':', '@', '`', ' ', '\0', '\xff'})
    EXPECT_EQ(hexDigitValue(c), -1) << static_cast<int>(c);
}

}  // namespace
}  // namespace kit
