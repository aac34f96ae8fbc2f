#pragma once

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/log.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/render_window.h"
#include "kit/render/renderer.h"
#include "kit/render/sprite_view.h"
#include "kit/ui/window.h"

namespace kit {

struct Rgba {
  int r = 0, g = 0, b = 0, a = 0;
};

// A real window (SDL's dummy driver unless the environment says otherwise)
// at one pixel per point, a window view of `content` points holding a sprite
// view, and a renderer that resolves image names to SVGs the test writes.
class RenderTest : public ::testing::Test {
 protected:
  explicit RenderTest(Size content = {200, 100}) : content_(content) {}

  void SetUp() override {
    if (!std::getenv("SDL_VIDEODRIVER"))
      SDL_SetHint(SDL_HINT_VIDEODRIVER, "dummy");
    WindowOptions options;
    options.content = content_;
    options.scale = 1;
    std::string error;
    renderWindow = RenderWindow::open(options, &error);
    ASSERT_TRUE(renderWindow) << error;
    renderer = std::make_unique<Renderer>(
        renderWindow->sdlRenderer(),
        [this](std::string_view name) -> std::optional<std::filesystem::path> {
          const auto path = images.path() / (std::string(name) + ".svg");
          if (std::filesystem::exists(path))
            return path;
          return std::nullopt;
        },
        log);
    window = std::make_shared<Window>(content_);
    sprite = std::make_shared<SpriteView>(Rect{{0, 0}, content_});
    window->addSubview(sprite);
  }

  // An SVG image of one colour, `name`.svg.
  void writeImage(const std::string& name, const std::string& fill) {
    std::ofstream(images.path() / (name + ".svg"))
        << R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10" viewBox="0 0 10 10">)"
        << R"(<rect width="10" height="10" fill=")" << fill << R"("/></svg>)";
  }

  void draw() {
    renderer->drawFrame(*window, renderWindow->viewport(), nowNanos);
    pixels = renderWindow->readPixels(&width, &height);
  }

  Rgba pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height)
      return {};
    const uint8_t* p = pixels.data() + (static_cast<size_t>(y) * width + x) * 4;
    return {p[0], p[1], p[2], p[3]};
  }
  bool isRed(int x, int y) const {
    const Rgba p = pixel(x, y);
    return p.r > 200 && p.g < 60 && p.b < 60;
  }
  // Pixels in the rectangle brighter than `level` in any channel.
  int ink(int x0, int y0, int x1, int y1, int level = 100) const {
    int n = 0;
    for (int y = y0; y < y1; ++y)
      for (int x = x0; x < x1; ++x) {
        const Rgba p = pixel(x, y);
        if (std::max({p.r, p.g, p.b}) > level)
          ++n;
      }
    return n;
  }
  uint64_t rasterizations() const { return renderer->stats().rasterizations; }

  Size content_;
  CapturingLog log;
  TempDir images{"twinlanes-render-test"};
  std::unique_ptr<RenderWindow> renderWindow;
  std::unique_ptr<Renderer> renderer;
  std::shared_ptr<Window> window;
  std::shared_ptr<SpriteView> sprite;
  int64_t nowNanos = 0;
  std::vector<uint8_t> pixels;
  int width = 0, height = 0;
};

}  // namespace kit
