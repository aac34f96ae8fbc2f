#include "kit/ui/line_breaker.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Every character is 10 points wide (a CJK character too), lines are 20 high.
double tenPerCharacter(std::string_view text) {
  double width = 0;
  for (const unsigned char c : text) {
    if ((c & 0xC0) != 0x80)
      width += 10;
  }
  return width;
}

std::vector<std::string> linesOf(const kit::TextBlock& block) {
  std::vector<std::string> out;
  for (const auto& line : kit::breakLines(block, tenPerCharacter, 20).lines)
    out.push_back(line.text);
  return out;
}

kit::TextBlock block(std::string text, double width, double height = kit::TextBlock::kUnbounded,
                     kit::LineBreakMode mode = kit::LineBreakMode::WordWrap, int lines = 0) {
  kit::TextBlock b;
  b.text = std::move(text);
  b.box = {width, height};
  b.lineBreakMode = mode;
  b.numberOfLines = lines;
  return b;
}

using Lines = std::vector<std::string>;
using kit::LineBreakMode;

TEST(LineBreaker, WrapsBetweenWordsAndInsideWordsOnlyWhenTheyAreTooLong) {
  EXPECT_EQ(linesOf(block("one two three", 80)), (Lines{"one two", "three"}));
  EXPECT_EQ(linesOf(block("abcdefghij xy", 40)), (Lines{"abcd", "efgh", "ij", "xy"}));
  EXPECT_EQ(linesOf(block("ab\n\ncd", 100)), (Lines{"ab", "", "cd"}));
  EXPECT_EQ(linesOf(block("one two", 30, kit::TextBlock::kUnbounded, LineBreakMode::CharWrap)),
            (Lines{"one", "two"}));
  // Chinese breaks between characters without spaces.
  EXPECT_EQ(linesOf(block("新记录新记录", 30)), (Lines{"新记录", "新记录"}));
}

TEST(LineBreaker, DropsLinesBeyondTheBoxOrTheLineLimitAndTruncatesWhatIsLeft) {
  EXPECT_EQ(linesOf(block("aa bb cc dd", 20, 45)), (Lines{"aa", "bb"}));
  EXPECT_EQ(linesOf(block("aa bb cc", 20, kit::TextBlock::kUnbounded, LineBreakMode::WordWrap, 1)),
            (Lines{"aa"}));
  EXPECT_EQ(linesOf(block("abcdefgh", 50, 20, LineBreakMode::TruncateTail)), (Lines{"abcd…"}));
  EXPECT_EQ(linesOf(block("abcdefgh", 50, 20, LineBreakMode::TruncateHead)), (Lines{"…efgh"}));
  EXPECT_EQ(linesOf(block("abcdefgh", 50, 20, LineBreakMode::TruncateMiddle)), (Lines{"ab…gh"}));
  EXPECT_EQ(linesOf(block("abcdefgh", 50, 19)), Lines{});
}

TEST(LineBreaker, SizeIsTheWidestLineByTheLinesShownInWholePoints) {
  const kit::BrokenText text = kit::breakLines(block("one two three", 80), tenPerCharacter, 20.5);
  EXPECT_EQ(text.size, (kit::Size{70, 41}));
  EXPECT_EQ(kit::breakLines(block("", 80), tenPerCharacter, 20).size, (kit::Size{0, 0}));
  EXPECT_TRUE(kit::breakLines(block("x", 0), tenPerCharacter, 20).lines.empty());
}

TEST(LineBreaker, MalformedUtf8StillAdvances) {
  const std::string bad =
      "ab\xff\xfe\xe6\x96"
      "cd";
  EXPECT_FALSE(kit::breakLines(block(bad, 20), tenPerCharacter, 20).lines.empty());
}

}  // namespace
