// What the renderer puts on screen: the scene through its view mapping,
// alpha, rotation, images and text, and views above the scene; and that
// steady frames rasterise nothing.
#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <numbers>

#include "kit/backends/desktop/render_window.h"
#include "kit/backends/desktop/sdl_image_codec.h"
#include "kit/foundation/log.h"
#include "kit/foundation/memory_resource_store.h"
#include "kit/render/renderer.h"
#include "kit/render/sprite_view.h"
#include "kit/scene/label_node.h"
#include "kit/scene/sprite_node.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

constexpr double kPi = std::numbers::pi;

struct Rgba {
  int r = 0, g = 0, b = 0, a = 0;
};

// A real window (SDL's dummy driver unless the environment says otherwise)
// at one pixel per point, a 200 x 100 window view holding a sprite view, and
// a renderer that resolves image names to SVGs the test writes. The sprite
// view shows a 100 x 100 scene aspect-filled: twice as large, centred, its
// top and bottom quarters cut off.
class SceneRenderTest : public ::testing::Test {
 protected:
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
        *renderWindow, codec, images,
        [this](std::string_view name) -> std::optional<std::string> {
          const std::string resource = std::string(name) + ".svg";
          if (images.exists(resource))
            return resource;
          return std::nullopt;
        },
        log);
    window = std::make_shared<Window>(content_);
    sprite = std::make_shared<SpriteView>(Rect{{0, 0}, content_});
    window->addSubview(sprite);
    scene = std::make_shared<Scene>(Size{100, 100});
    scene->setScaleMode(SceneScaleMode::AspectFill);
    sprite->presentScene(scene);
  }
  std::shared_ptr<SpriteNode> add(Color color, Size size, Point position) {
    auto node = SpriteNode::spriteNodeWithColor(color, size);
    node->setPosition(position);
    scene->addChild(node);
    return node;
  }

  // An SVG image of one colour, `name`.svg.
  void writeImage(const std::string& name, const std::string& fill) {
    images.add(
        name + ".svg",
        R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10" viewBox="0 0 10 10">)"
        R"(<rect width="10" height="10" fill=")" +
            fill + R"("/></svg>)");
  }

  void draw() {
    renderer->drawFrame(*window, renderWindow->viewport(), nowNanos);
    auto read = renderWindow->readPixels(width, height);
    ASSERT_TRUE(read) << read.error();
    pixels = std::move(*read);
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

  const Size content_{200, 100};
  CapturingLog log;
  MemoryResourceStore images;
  SdlImageCodec codec;
  std::unique_ptr<RenderWindow> renderWindow;
  std::unique_ptr<Renderer> renderer;
  std::shared_ptr<Window> window;
  std::shared_ptr<SpriteView> sprite;
  std::shared_ptr<Scene> scene;
  int64_t nowNanos = 0;
  std::vector<uint8_t> pixels;
  int width = 0, height = 0;
};

TEST_F(SceneRenderTest, SpritesLandWhereTheAspectFillMappingPutsThem) {
  add({1, 0, 0, 1}, {10, 10}, {50, 50});  // view (100, 50), 20 px wide
  add({1, 0, 0, 1}, {10, 10}, {10, 70});  // view (20, 10)
  draw();
  EXPECT_TRUE(isRed(100, 50));
  EXPECT_TRUE(isRed(91, 41));
  EXPECT_FALSE(isRed(100, 62));
  EXPECT_FALSE(isRed(112, 50));
  EXPECT_TRUE(isRed(20, 10));  // y up in the scene, y down on screen
  EXPECT_FALSE(isRed(20, 90));
}

// A bar from its anchor towards +x, turned an eighth of a turn, points up and
// to the right on screen, not down.
TEST_F(SceneRenderTest, RotationIsCounterClockwiseAsInTheScene) {
  auto bar = add({1, 0, 0, 1}, {20, 2}, {50, 50});
  bar->setAnchorPoint({0, 0.5});
  bar->setZRotation(kPi / 4);
  draw();
  EXPECT_TRUE(isRed(100 + 14, 50 - 14));
  EXPECT_FALSE(isRed(100 + 14, 50 + 14));
}

TEST_F(SceneRenderTest, AlphaMultipliesDownTheTreeAndInvisibleNodesCostNothing) {
  auto half = add({1, 1, 1, 1}, {10, 10}, {25, 50});
  half->setAlpha(0.5);
  auto hidden = add({1, 1, 1, 1}, {10, 10}, {50, 50});
  hidden->setHidden(true);
  auto clear = add({1, 1, 1, 1}, {10, 10}, {75, 50});
  clear->setAlpha(0);
  draw();
  EXPECT_NEAR(pixel(50, 50).r, 128, 2);
  EXPECT_EQ(pixel(100, 50).r, 0);
  EXPECT_EQ(pixel(150, 50).r, 0);
  EXPECT_EQ(renderer->stats().drawCalls, 1u);
}

TEST_F(SceneRenderTest, ImagesAreRasterisedOncePerDrawnSizeAndCached) {
  writeImage("box", "#ff0000");
  auto node = SpriteNode::spriteNodeWithTexture(Texture("box"), {10, 10});
  node->setPosition({50, 50});
  scene->addChild(node);
  draw();
  EXPECT_TRUE(isRed(100, 50));
  EXPECT_EQ(rasterizations(), 1u);
  draw();
  draw();
  EXPECT_EQ(rasterizations(), 1u);
  node->setSize({20, 10});
  draw();
  EXPECT_EQ(rasterizations(), 2u);
  EXPECT_TRUE(isRed(100 + 18, 50));
  node->setSize({10, 10});
  draw();
  EXPECT_EQ(rasterizations(), 2u);

  node->setTexture(Texture("nothing"));  // missing: logged once, draws nothing
  draw();
  draw();
  EXPECT_EQ(pixel(100, 50).r, 0);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"image not found: nothing"});
}

TEST_F(SceneRenderTest, LabelsAreRasterisedAgainOnlyWhenTheirTextChanges) {
  auto label = LabelNode::labelNodeWithFontNamed("Arial-BoldMT");
  label->setText("88");
  label->setFontSize(20);
  label->setVerticalAlignmentMode(LabelVerticalAlignmentMode::Center);
  label->setPosition({50, 50});
  scene->addChild(label);
  draw();
  const uint64_t first = rasterizations();
  EXPECT_EQ(first, 1u);
  // White text, about 40 x 40 pixels at the doubled scale, centred on (100, 50).
  EXPECT_GT(ink(80, 30, 120, 70), 200);
  EXPECT_EQ(ink(0, 0, 60, 100), 0);
  label->setPosition({40, 50});  // a move is not a change of content
  draw();
  EXPECT_EQ(rasterizations(), first);
  label->setText("1");
  draw();
  EXPECT_EQ(rasterizations(), first + 1);
}

TEST_F(SceneRenderTest, ViewsAboveTheSceneDrawOverItWithTheirAlphaAndCorners) {
  add({1, 0, 0, 1}, {100, 100}, {50, 50});  // the whole view red
  auto panel = std::make_shared<View>(Rect{{10, 10}, {60, 60}});
  panel->setBackgroundColor({0, 0, 1, 1});
  panel->setCornerRadius(20);
  sprite->addSubview(panel);
  auto veil = std::make_shared<View>(Rect{{120, 10}, {60, 60}});
  veil->setBackgroundColor({0, 0, 0, 1});
  veil->setAlpha(0.5);
  sprite->addSubview(veil);
  auto gone = std::make_shared<View>(Rect{{120, 80}, {20, 20}});
  gone->setBackgroundColor({0, 1, 0, 1});
  gone->setHidden(true);
  sprite->addSubview(gone);
  draw();
  EXPECT_EQ(pixel(40, 40).b, 255);
  EXPECT_TRUE(isRed(11, 11));  // the rounded corner shows the scene
  EXPECT_NEAR(pixel(150, 40).r, 128, 2);
  EXPECT_TRUE(isRed(130, 90));
}

}  // namespace
}  // namespace kit
