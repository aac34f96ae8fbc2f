// The rating prompt as the real renderer draws it over a mid-grey screen, in a
// window on SDL's dummy driver at scale 2.

#include "kit/backends/desktop/render_window.h"
#include "kit/backends/desktop/sdl_image_codec.h"
#include "kit/render/renderer.h"
#include "names/preference_keys.h"
#include "rating_fixture.h"

namespace {

class PromptRenderTest : public RatingTest {
 protected:
  // The green of the pixel at window point (x, y), and the dark (text)
  // pixels inside a rectangle of window points.
  int at(double x, double y) const {
    return pixels[(size_t(y * 2) * width + size_t(x * 2)) * 4 + 1];
  }

  int ink(kit::Rect r) const {
    int n = 0;
    for (double y = r.minY(); y < r.maxY(); y += 0.5) {
      for (double x = r.minX(); x < r.maxX(); x += 0.5)
        n += at(x, y) < 160;
    }
    return n;
  }

  // Draws the window as it stands into pixels.
  void draw() {
    std::string error;
    auto window = kit::RenderWindow::open({.content = {320, 568}, .scale = 2, .icon = {}}, &error);
    ASSERT_TRUE(window) << error;
    kit::SdlImageCodec codec;
    kit::Renderer renderer(
        *window, codec, platform().bundle.resources(),
        [](std::string_view) { return std::nullopt; }, platform().log);
    renderer.drawFrame(*launch().window, window->viewport(), platform().clock.monotonicNanos());
    auto read = window->readPixels(width, height);
    ASSERT_TRUE(read) << read.error();
    pixels = std::move(*read);
  }

  std::vector<uint8_t> pixels;
  int width = 0, height = 0;
};

TEST_F(PromptRenderTest, ChinesePromptIsALightPanelWithGlyphsOverTheDimmedScreen) {
  platform().defaults.registerDefaults({{prefkey::kLanguages, kit::Value::Array{"zh-Hans-CN"}}});
  launch().root->view()->setBackgroundColor({0.5, 0.5, 0.5, 1});
  service().showRT(launch().root);
  advance(0.5);
  draw();

  const kit::Rect p = alert()->subviews().front()->frame();
  EXPECT_LT(at(10, 10), 100);
  EXPECT_GT(at(p.midX(), p.minY() + 4), 230);
  EXPECT_GT(ink({{p.minX(), p.minY()}, {p.size.width, 60}}), 100);
  EXPECT_EQ(alert()->buttonTitleAtIndex(2), "不了，我要反馈");
  for (int i = 0; i < 3; ++i)
    EXPECT_GT(ink(*alert()->frameOfButtonAtIndex(i)), 50) << "button " << i;
}

// The highlighted "Not now" at the bottom filled its whole rectangle, past
// the panel's rounded bottom corners (the panel clips to its rectangle).
TEST_F(PromptRenderTest, TheHighlightedBottomButtonKeepsInsideTheRoundedCorners) {
  launch().root->view()->setBackgroundColor({0.5, 0.5, 0.5, 1});
  service().showRT(launch().root);
  advance(0.5);
  draw();
  const kit::Rect p = alert()->subviews().front()->frame();
  const int dimmed = at(10, 10);
  const int highlight = at(p.midX(), p.maxY() - 2);
  ASSERT_GT(highlight, dimmed + 100);  // "Not now" is highlighted
  for (double x : {p.minX() + 1, p.maxX() - 1}) {
    EXPECT_NEAR(at(x, p.maxY() - 1), dimmed, 2) << x;
    EXPECT_NEAR(at(x, p.maxY() - 13), highlight, 2) << x;  // square above the rounding
  }
}

}  // namespace
