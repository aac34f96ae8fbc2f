// Toasts as a player sees them: drawn by the real renderer into a window on
// SDL's dummy driver, one pixel per point.

#include <gtest/gtest.h>

#include <cstdlib>

#include "kit/backends/desktop/render_window.h"
#include "kit/backends/desktop/sdl_image_codec.h"
#include "kit/foundation/memory_resource_store.h"
#include "kit/render/renderer.h"
#include "kit/ui/window.h"
#include "overlay_fixture.h"

namespace {

using kit::Rect;

constexpr int kGrey = 128;  // the window's background, 0.5 grey

class OverlayRenderTest : public OverlayTest {
 protected:
  void draw() {
    if (!std::getenv("SDL_VIDEODRIVER"))
      setenv("SDL_VIDEODRIVER", "dummy", 1);
    std::string error;
    auto output = kit::RenderWindow::open({.content = {320, 480}, .scale = 1, .icon = {}}, &error);
    ASSERT_TRUE(output) << error;
    kit::SdlImageCodec codec;
    kit::MemoryResourceStore noImages;
    kit::Renderer renderer(
        *output, codec, noImages, [](std::string_view) { return std::nullopt; }, log);
    renderer.drawFrame(*window, output->viewport(), clock.monotonicNanos());
    auto read = output->readPixels(width, height);
    ASSERT_TRUE(read) << read.error();
    pixels = std::move(*read);
  }

  // The green of a pixel, and the near-white pixels inside `r`.
  int at(double x, double y) const {
    return pixels[(static_cast<size_t>(y) * width + static_cast<size_t>(x)) * 4 + 1];
  }
  int whiteInk(Rect r) const {
    int n = 0;
    for (int y = int(r.minY()); y < int(r.maxY()); ++y) {
      for (int x = int(r.minX()); x < int(r.maxX()); ++x)
        n += at(x, y) > 200;
    }
    return n;
  }

  std::shared_ptr<kit::Window> window = std::make_shared<kit::Window>(kit::Size{320, 480});
  OverlayRenderTest() { window->setBackgroundColor({0.5, 0.5, 0.5, 1}); }
  std::vector<uint8_t> pixels;
  int width = 0, height = 0;
};

TEST_F(OverlayRenderTest, ToastsAreDarkRoundedPanelsWithWhiteInkAndAShadowBelowRight) {
  makeToast(*window, "Mail is not available", 1.5, "center");
  makeToastActivity(*window, "top");
  advance(0.3);
  draw();
  const Rect panel = window->subviews()[0]->frame();
  const Rect activity = window->subviews()[1]->frame();
  EXPECT_GT(whiteInk(activity), 20) << "the spinner";
  // Black at 0.8 over the grey and over its own shadow, beside the text.
  EXPECT_LT(at(panel.minX() + 5, panel.midY()), kGrey / 5);
  EXPECT_NEAR(at(panel.minX() - 8, panel.midY()), kGrey, 2) << "nothing left of it";
  EXPECT_GT(at(panel.minX() + 0.5, panel.minY() + 0.5), kGrey / 2) << "rounded corner";
  EXPECT_LT(at(panel.maxX() + 2, panel.midY()), kGrey - 10) << "shadow at the right";
  EXPECT_LT(at(panel.midX(), panel.maxY() + 2), kGrey - 10) << "and below";
  EXPECT_NEAR(at(panel.midX(), panel.minY() - 3), kGrey, 4) << "not above";
  EXPECT_GT(whiteInk(panel), 60);
  EXPECT_EQ(whiteInk({{0, activity.maxY()}, {320, panel.minY() - activity.maxY()}}), 0);

  advance(1.8);
  draw();
  EXPECT_NEAR(at(panel.minX() + 5, panel.midY()), kGrey, 2) << "gone after its time";
}

}  // namespace
