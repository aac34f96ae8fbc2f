#include "kit/ui/text_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "kit/backends/desktop/cairo_image_system.h"
#include "kit/foundation/graphics.h"
#include "kit/ui/label.h"

namespace kit {
namespace {

const Font kMessageFont = Font::systemFontOfSize(16);
const std::string kLongMessage =
    "Mail is not set up on this device, so the feedback could not be sent. Please add an account "
    "in the settings and try again later.";

int opaquePixels(const TextBitmap& bitmap) {
  int count = 0;
  for (size_t i = 3; i < bitmap.rgba.size(); i += 4)
    count += bitmap.rgba[i] > 128;
  return count;
}

TEST(Fonts, BoldArialResolvesToARealBoldFace) {
  // Bold glyphs are wider: a mapping that lost the weight would measure alike.
  const Size regular = sizeWithFont("12345 Score", Font::fontWithName("ArialMT", 40), {1000, 1000});
  const Size bold =
      sizeWithFont("12345 Score", Font::fontWithName("Arial-BoldMT", 40), {1000, 1000});
  EXPECT_GT(bold.width, regular.width);
  // Sizes are pixels: a 40-point line is about 46 high, not 61 (40 pt at 96 dpi).
  EXPECT_GE(bold.height, 44);
  EXPECT_LE(bold.height, 48);
}

TEST(Measurement, ShortWordIsOneLineOfItsOwnWidth) {
  const Size size = sizeWithFont("short", kMessageFont, {256, 454});
  EXPECT_GT(size.width, 30);
  EXPECT_LT(size.width, 50);
  EXPECT_GE(size.height, 17);
  EXPECT_LE(size.height, 20);
  EXPECT_EQ(size.width, std::ceil(size.width));  // whole points
}

TEST(Measurement, LongMessageWrapsWithinTheWidthAndLongWordsBreakInside) {
  const Size oneLine = sizeWithFont("short", kMessageFont, {256, 454});
  const Size size = sizeWithFont(kLongMessage, kMessageFont, {256, 454});
  EXPECT_LE(size.width, 256);
  EXPECT_GT(size.width, 200);  // the width used, close to the limit
  EXPECT_GE(size.height, 4 * oneLine.height - 4);
  EXPECT_LE(size.height, 7 * oneLine.height);

  const Size narrower = sizeWithFont(kLongMessage, kMessageFont, {150, 454});
  EXPECT_LE(narrower.width, 150);
  EXPECT_GT(narrower.height, size.height);
}

TEST(Measurement, TextTallerThanTheLimitOrItsLineCountIsCutAtTheLastWholeLine) {
  const Size full = sizeWithFont(kLongMessage, kMessageFont, {150, 1000});
  const Size line = sizeWithFont("short", kMessageFont, {150, 1000});
  const Size cut = sizeWithFont(kLongMessage, kMessageFont, {150, 2.5 * line.height});
  EXPECT_NEAR(cut.height, 2 * line.height, 1);
  EXPECT_LT(cut.height, full.height);
  EXPECT_EQ(sizeWithFont(kLongMessage, kMessageFont, {150, line.height / 2}), Size{});
  const TextLayout twoLines(
      {kLongMessage, kMessageFont, {150, 1000}, LineBreakMode::TruncateTail, 2});
  EXPECT_EQ(twoLines.lineCount(), 2);
  EXPECT_LE(twoLines.size().width, 150);
}

TEST(Measurement, WordsLongerThanALineBreakInsideRatherThanOverflow) {
  const Size size = sizeWithFont("Supercalifragilisticexpialidocious", kMessageFont, {100, 1000});
  EXPECT_LE(size.width, 100);
  EXPECT_GT(size.height, 30);  // more than one line
}

TEST(Measurement, ChineseUsesRealGlyphs) {
  const Size record = sizeWithFont("新记录", Font::fontWithName("Arial-BoldMT", 40), {1000, 1000});
  EXPECT_GT(record.width, 100);  // three full-width glyphs, no empty boxes
  EXPECT_LT(record.width, 140);
  EXPECT_GT(record.height, 40);
  const Size wrapped =
      sizeWithFont("邮件不可用，请先设置邮件账户，然后再试一次。", kMessageFont, {100, 1000});
  EXPECT_LE(wrapped.width, 100);
  EXPECT_GT(wrapped.height, 3 * 16);
}

TEST(Measurement, DegenerateInputMeasuresEmpty) {
  EXPECT_EQ(sizeWithFont("", kMessageFont, {100, 100}), Size{});
  EXPECT_EQ(sizeWithFont("text", kMessageFont, {std::nan(""), 100}), Size{});
  // Invalid UTF-8 and silly sizes still measure something sane.
  EXPECT_GT(sizeWithFont("ab\xff\xfe"
                         "cd",
                         kMessageFont, {500, 100})
                .width,
            0);
  EXPECT_GT(sizeWithFont("text", Font::systemFontOfSize(std::nan("")), {500, 100}).width, 0);
}

TEST(Rendering, DrawsTheMeasuredTextInItsColourAtAnyScale) {
  const TextLayout layout(TextBlock{"Hello", kMessageFont});
  const Size size = layout.size();

  const TextBitmap one = layout.render({}, 1, Color{1, 0, 0, 1});
  EXPECT_EQ(one.width, size.width);
  EXPECT_EQ(one.height, size.height);
  ASSERT_GT(opaquePixels(one), 20);
  for (size_t i = 0; i < one.rgba.size(); i += 4) {
    if (one.rgba[i + 3] == 0)
      continue;
    ASSERT_EQ(one.rgba[i], 255);  // straight colour under any coverage
    ASSERT_EQ(one.rgba[i + 1], 0);
  }

  const TextBitmap two = layout.render({}, 2, Color::white());
  EXPECT_EQ(two.width, 2 * size.width);
  // Unhinted layout: twice the scale covers about four times the pixels.
  EXPECT_NEAR(opaquePixels(two), 4.0 * opaquePixels(one), 0.35 * 4 * opaquePixels(one));
  EXPECT_LE(layout.render({1e7, 10}, 1, Color::white()).width, 4096);  // capped
}

TEST(LabelSizing, SizeThatFitsFollowsLinesAndTreatsZeroAsUnbounded) {
  Label label;
  label.setText(kLongMessage);
  label.setFont(kMessageFont);
  const Size oneLine = label.sizeThatFits({0, 0});
  EXPECT_GT(oneLine.width, 500);
  EXPECT_LT(oneLine.height, 25);

  label.setNumberOfLines(0);
  label.setLineBreakMode(LineBreakMode::WordWrap);
  const Size wrapped = label.sizeThatFits({200, 0});
  EXPECT_LE(wrapped.width, 200);
  EXPECT_GT(wrapped.height, 3 * oneLine.height);
  EXPECT_EQ(wrapped, sizeWithFont(kLongMessage, kMessageFont, {200, 1e9}));
}

// Deterministic metrics for code that only needs sizes: 10 points a
// character on one line 20 high.
class FixedTextSystem final : public TextSystem {
 public:
  TextMetrics layout(const TextBlock& block) override {
    ++layouts;
    return {{10.0 * static_cast<double>(block.text.size()), 20}, 1, 0};
  }
  TextBitmap render(const TextBlock&, const TextMetrics& metrics, Size, double, Color) override {
    rendered = metrics;
    return {};
  }
  double firstBaseline(const TextBlock&) override { return 15; }

  int layouts = 0;
  std::optional<TextMetrics> rendered;
};

TEST(TextSystemSeam, TextIsMeasuredAndDrawnByTheInstalledSystemAlone) {
  auto owned = std::make_unique<FixedTextSystem>();
  FixedTextSystem& fixed = *owned;
  Graphics graphics(std::move(owned), std::make_unique<CairoImageSystem>());
  Graphics* before = Graphics::setCurrent(&graphics);

  EXPECT_EQ(sizeWithFont("abc", kMessageFont, {100, 100}), (Size{30, 20}));
  // Nothing to lay out never reaches the system.
  EXPECT_EQ(sizeWithFont("", kMessageFont, {100, 100}), Size{});
  EXPECT_EQ(sizeWithFont("abc", kMessageFont, {0, 100}), Size{});
  EXPECT_EQ(fixed.layouts, 1);

  const TextLayout layout(TextBlock{"ab", kMessageFont});
  layout.render({}, 2, Color::black());
  EXPECT_EQ(fixed.rendered, (TextMetrics{{20, 20}, 1, 0}));

  Graphics::setCurrent(before);
}

}  // namespace
}  // namespace kit
