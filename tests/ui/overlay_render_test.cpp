// What a player sees of toasts and the progress overlay: drawn by the real
// renderer into a window on SDL's dummy driver, one pixel per point.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "kit/render/render_window.h"
#include "kit/render/renderer.h"
#include "kit/ui/window.h"
#include "overlay_fixture.h"
#include "ui/progress_overlay.h"
#include "ui/view_toast.h"

namespace {

using kit::Rect;

struct Rgb {
  int r = 0, g = 0, b = 0;
  int brightest() const { return std::max({r, g, b}); }
};

constexpr int kGrey = 128;  // the host's background, 0.5 grey

class OverlayRenderTest : public OverlayTest {
 protected:
  void SetUp() override {
    if (!std::getenv("SDL_VIDEODRIVER"))
      setenv("SDL_VIDEODRIVER", "dummy", 1);
    kit::WindowOptions options;
    options.content = {320, 480};
    options.scale = 1;
    std::string error;
    renderWindow = kit::RenderWindow::open(options, &error);
    ASSERT_TRUE(renderWindow) << error;
    renderer = std::make_unique<kit::Renderer>(
        renderWindow->sdlRenderer(), [](std::string_view) { return std::nullopt; }, log);
    window->setBackgroundColor({0.5, 0.5, 0.5, 1});
  }

  void draw() {
    renderer->drawFrame(*window, renderWindow->viewport(), clock.monotonicNanos());
    pixels = renderWindow->readPixels(&width, &height);
  }

  Rgb at(double x, double y) const {
    const int px = static_cast<int>(x), py = static_cast<int>(y);
    if (px < 0 || py < 0 || px >= width || py >= height)
      return {};
    const uint8_t* p = pixels.data() + (static_cast<size_t>(py) * width + px) * 4;
    return {p[0], p[1], p[2]};
  }
  // Near-white pixels inside `r`.
  int whiteInk(Rect r) const {
    int n = 0;
    for (int y = int(r.minY()); y < int(r.maxY()); ++y) {
      for (int x = int(r.minX()); x < int(r.maxX()); ++x)
        n += at(x, y).brightest() > 200;
    }
    return n;
  }

  std::shared_ptr<kit::Window> window = std::make_shared<kit::Window>(kit::Size{320, 480});
  std::unique_ptr<kit::RenderWindow> renderWindow;
  std::unique_ptr<kit::Renderer> renderer;
  std::vector<uint8_t> pixels;
  int width = 0, height = 0;
};

TEST_F(OverlayRenderTest, ToastIsADarkRoundedPanelWithWhiteTextAndAShadowBelowRight) {
  makeToast(*window, "Mail is not available", 1.5, "center");
  advance(0.3);
  draw();
  const auto toast = onlyToastOf(*window);
  const Rect panel = toast->frame();
  const Rect text = labelsOf(*toast)[0]->frame();

  // Black at 0.8 over the grey and over its own shadow, in the padding
  // beside the text.
  EXPECT_LT(at(panel.minX() + 5, panel.midY()).g, kGrey / 5);
  EXPECT_NEAR(at(panel.minX() - 8, panel.midY()).g, kGrey, 2) << "nothing left of it";
  // Rounded: the very corner shows what is behind.
  EXPECT_GT(at(panel.minX() + 0.5, panel.minY() + 0.5).g, kGrey / 2);
  // The shadow falls below and to the right only.
  EXPECT_LT(at(panel.maxX() + 2, panel.midY()).g, kGrey - 10);
  EXPECT_LT(at(panel.midX(), panel.maxY() + 2).g, kGrey - 10);
  EXPECT_NEAR(at(panel.midX(), panel.minY() - 3).g, kGrey, 4);

  const Rect textArea{{panel.minX() + text.minX(), panel.minY() + text.minY()}, text.size};
  EXPECT_GT(whiteInk(textArea), 60);
  EXPECT_EQ(whiteInk({{0, 0}, {320, panel.minY()}}), 0);
  EXPECT_EQ(whiteInk({{0, panel.maxY()}, {320, 480 - panel.maxY()}}), 0);

  advance(1.8);
  draw();
  EXPECT_NEAR(at(panel.minX() + 5, panel.midY()).g, kGrey, 2) << "gone after its time";
}

TEST_F(OverlayRenderTest, SpinnerAndProgressRingShowWhiteInTheirPanels) {
  makeToastActivity(*window, "top");
  ProgressOverlay overlay(window, runLoop, ProgressOverlay::Mode::Ring);
  overlay.setProgress(0.5);
  overlay.setLabelText("Loading 50%");
  overlay.show();
  advance(0.6);
  draw();

  const Rect activity = toastsOf(*window)[0]->frame();
  const Rect progress = overlay.panel()->frame();
  EXPECT_LT(at(activity.minX() + 8, activity.midY()).g, kGrey / 5);
  EXPECT_GT(whiteInk(activity), 20);
  EXPECT_NEAR(at(progress.minX() + 8, progress.midY()).g, kGrey / 5, 3) << "no shadow";
  // Half the ring is lit: its right side (first half, clockwise from the top)
  // carries more white than its left.
  const Rect ring = overlay.panel()->subviews()[0]->frame();
  const Rect onScreen{{progress.minX() + ring.minX(), progress.minY() + ring.minY()}, ring.size};
  const double half = ring.size.width / 2;
  const int right = whiteInk({{onScreen.midX() + 1, onScreen.minY()}, {half, ring.size.height}});
  const int left = whiteInk({{onScreen.minX(), onScreen.minY()}, {half - 1, ring.size.height}});
  EXPECT_GT(right, 20);
  EXPECT_LT(left, right / 4);
}

}  // namespace
