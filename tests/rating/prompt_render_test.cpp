// What a player sees of the rating prompt: the real renderer draws it over a
// mid-grey screen in a window on SDL's dummy driver, at scale 2. With
// TWINLANES_SHOTS set to a folder, the frames are also saved there as PNGs.

#include <algorithm>
#include <cstdlib>

#include "kit/render/render_window.h"
#include "kit/render/renderer.h"
#include "rating_fixture.h"

namespace {

struct Rgb {
  int r = 0, g = 0, b = 0;
};

class PromptRenderTest : public RatingTest {
 protected:
  void SetUp() override {
    kit::WindowOptions options;
    options.content = {320, 568};
    options.scale = 2;
    std::string error;
    renderWindow = kit::RenderWindow::open(options, &error);
    ASSERT_TRUE(renderWindow) << error;
    renderer = std::make_unique<kit::Renderer>(
        renderWindow->sdlRenderer(), [](std::string_view) { return std::nullopt; }, platform().log);
  }

  void showPromptIn(const char* language) {
    platform().defaults.registerDefaults({{"AppleLanguages", kit::Value::Array{language}}});
    launch().root->view()->setBackgroundColor({0.5, 0.5, 0.5, 1});
    service().showRT(launch().root);
    advance(0.5);
  }

  void draw(const std::string& name) {
    renderer->drawFrame(*launch().window, renderWindow->viewport(),
                        platform().clock.monotonicNanos());
    pixels = renderWindow->readPixels(&width, &height);
    if (const char* folder = std::getenv("TWINLANES_SHOTS"))
      renderWindow->saveScreenshot(std::string(folder) + "/" + name + ".png", nullptr);
  }

  // The pixel at window point (x, y).
  Rgb at(double x, double y) const {
    const int px = static_cast<int>(x * 2), py = static_cast<int>(y * 2);
    const uint8_t* p = pixels.data() + (static_cast<size_t>(py) * width + px) * 4;
    return {p[0], p[1], p[2]};
  }

  // Dark pixels (text) inside a rectangle of window points.
  int ink(kit::Rect r) const {
    int n = 0;
    for (double y = r.minY(); y < r.maxY(); y += 0.5) {
      for (double x = r.minX(); x < r.maxX(); x += 0.5)
        n += at(x, y).g < 160;
    }
    return n;
  }

  kit::Rect panel() const { return alert()->subviews().front()->frame(); }

  std::unique_ptr<kit::RenderWindow> renderWindow;
  std::unique_ptr<kit::Renderer> renderer;
  std::vector<uint8_t> pixels;
  int width = 0, height = 0;
};

TEST_F(PromptRenderTest, PromptIsALightPanelOverTheDimmedScreen) {
  showPromptIn("en");
  draw("prompt-en");
  const kit::Rect p = panel();
  // Dimmed grey around, a light panel in the middle.
  EXPECT_LT(at(10, 10).r, 100);
  EXPECT_GT(at(p.midX(), p.minY() + 4).r, 230);
  // The message and the three buttons carry text.
  EXPECT_GT(ink({{p.minX(), p.minY()}, {p.size.width, 60}}), 100);
  for (int i = 0; i < 3; ++i) {
    const kit::Rect button = *alert()->frameOfButtonAtIndex(i);
    EXPECT_GT(ink(button), 50) << "button " << i;
  }
}

TEST_F(PromptRenderTest, ChinesePromptDrawsItsGlyphs) {
  showPromptIn("zh-Hans-CN");
  draw("prompt-zh");
  EXPECT_EQ(alert()->buttonTitleAtIndex(2), "不了，我要反馈");
  EXPECT_GT(ink(*alert()->frameOfButtonAtIndex(2)), 50);
}

}  // namespace
