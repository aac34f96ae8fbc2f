// What the renderer puts on screen: the scene through its view mapping,
// alpha, rotation, images and text, and views above the scene; and that
// steady frames rasterise nothing.
#include <cmath>
#include <numbers>

#include "kit/scene/label_node.h"
#include "kit/scene/sprite_node.h"
#include "kit/ui/label.h"
#include "render_fixture.h"

namespace kit {
namespace {

constexpr double kPi = std::numbers::pi;

class SceneRenderTest : public RenderTest {
 protected:
  // A 100 x 100 scene shown aspect-filled in the 200 x 100 view: twice as
  // large, centred, its top and bottom quarters cut off.
  void SetUp() override {
    RenderTest::SetUp();
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
  std::shared_ptr<Scene> scene;
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

TEST_F(SceneRenderTest, RotationIsCounterClockwiseAsInTheScene) {
  // A bar from its anchor towards +x, turned an eighth of a turn.
  auto bar = add({1, 0, 0, 1}, {20, 2}, {50, 50});
  bar->setAnchorPoint({0, 0.5});
  bar->setZRotation(kPi / 4);
  draw();
  // Up and to the right on screen, not down.
  EXPECT_TRUE(isRed(100 + 14, 50 - 14));
  EXPECT_FALSE(isRed(100 + 14, 50 + 14));
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
}

TEST_F(SceneRenderTest, AMissingImageIsLoggedOnceAndDrawsNothing) {
  auto node = SpriteNode::spriteNodeWithTexture(Texture("nothing"), {10, 10});
  node->setPosition({50, 50});
  scene->addChild(node);
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

TEST_F(SceneRenderTest, LabelAlignmentModesPlaceTheTextAroundThePosition) {
  auto label = LabelNode::labelNodeWithFontNamed("Arial-BoldMT");
  label->setText("WWW");
  label->setFontSize(10);
  label->setHorizontalAlignmentMode(LabelHorizontalAlignmentMode::Left);
  label->setVerticalAlignmentMode(LabelVerticalAlignmentMode::Bottom);
  label->setPosition({50, 50});
  scene->addChild(label);
  draw();
  // Entirely right of and above (100, 50) on screen.
  EXPECT_GT(ink(100, 20, 160, 50), 50);
  EXPECT_EQ(ink(40, 0, 99, 100) + ink(100, 52, 200, 100), 0);
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

TEST_F(SceneRenderTest, LabelViewsDrawTheirTextAndKeepItUntilItChanges) {
  auto label = std::make_shared<Label>(Rect{{10, 10}, {180, 40}});
  label->setText("Hello");
  label->setTextColor(Color::white());
  label->setFont(Font::boldSystemFontOfSize(24));
  sprite->addSubview(label);
  draw();
  const uint64_t made = rasterizations();
  EXPECT_GT(ink(10, 10, 190, 50), 200);
  draw();
  EXPECT_EQ(rasterizations(), made);
  label->setText("Hello again");
  draw();
  EXPECT_EQ(rasterizations(), made + 1);
}

}  // namespace
}  // namespace kit
