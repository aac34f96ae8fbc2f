#include <numbers>
#include <string>
#include <vector>

#include "kit/scene/action.h"
#include "kit/scene/draw_list.h"
#include "scene_fixture.h"

namespace kit::testing {
namespace {

using SceneGraphTest = SceneFixture;

std::vector<const Node*> drawOrder(const Scene& scene) {
  std::vector<const Node*> order;
  for (const DrawItem& item : buildDrawList(scene))
    order.push_back(item.node);
  return order;
}

TEST_F(SceneGraphTest, DrawingFollowsAccumulatedZWithTiesInTreeOrder) {
  // Three full-screen layers at the same z, added home, help, over; each has
  // a child at z 0 relative to its layer.
  auto background = addSprite({0, 0}, {320, 568});
  auto car = addSprite({40, 92}, {56, 42});
  car->setZPosition(1);
  std::vector<std::shared_ptr<SpriteNode>> layers, buttons;
  for (int i = 0; i < 3; ++i) {
    layers.push_back(addSprite({0, 0}, {320, 568}));
    layers.back()->setZPosition(2);
    buttons.push_back(addSprite({160, 284}, {80, 80}, layers.back()));
  }
  auto score = addSprite({160, 536}, {100, 50}, background);
  score->setZPosition(1);  // 0 + 1: level with the car, but earlier in the tree

  EXPECT_EQ(drawOrder(*scene),
            (std::vector<const Node*>{background.get(), score.get(), car.get(), layers[0].get(),
                                      buttons[0].get(), layers[1].get(), buttons[1].get(),
                                      layers[2].get(), buttons[2].get()}));
}

TEST_F(SceneGraphTest, HiddenAndAlphaAreInheritedByTheDrawList) {
  auto layer = addSprite({0, 0}, {320, 568});
  layer->setAlpha(0.5);
  auto button = addSprite({10, 10}, {20, 20}, layer);
  button->setAlpha(0.5);
  auto clearLayer = SpriteNode::spriteNodeWithColor(Color::clear(), {320, 568});
  scene->addChild(clearLayer);
  auto obstacle = addSprite({5, 5}, {10, 10}, clearLayer);
  // The clear layer draws nothing, its child does.
  EXPECT_EQ(drawOrder(*scene),
            (std::vector<const Node*>{layer.get(), button.get(), obstacle.get()}));
  auto items = buildDrawList(*scene);
  EXPECT_EQ(items[1].alpha, 0.25);

  layer->setAlpha(0);  // a faded-out overlay: nothing of it is drawn
  clearLayer->setHidden(true);
  EXPECT_TRUE(buildDrawList(*scene).empty());
  layer->setAlpha(1);
  layer->setHidden(true);
  EXPECT_TRUE(buildDrawList(*scene).empty());
  layer->setHidden(false);
  button->setHidden(true);
  EXPECT_EQ(drawOrder(*scene), std::vector<const Node*>{layer.get()});
}

TEST_F(SceneGraphTest, DrawItemsCarryTheSceneTransformAndContent) {
  auto layer = addNode({100, 50});
  layer->setZRotation(std::numbers::pi / 2);
  auto sprite = addSprite({10, 0}, {20, 10}, layer);
  sprite->setAnchorPoint({0, 0});
  auto label = LabelNode::labelNodeWithFontNamed("Arial-BoldMT");
  label->setText("12");
  scene->addChild(label);

  auto items = buildDrawList(*scene);
  ASSERT_EQ(items.size(), 2u);
  const Point corner = items[0].transform.apply({20, 10});  // the sprite's far corner
  EXPECT_NEAR(corner.x, 100 - 10, 1e-12);
  EXPECT_NEAR(corner.y, 50 + 10 + 20, 1e-12);
  const Point back =
      sprite->convertPointFromNode(scene->convertPointFromNode({1, 0}, *sprite), *scene);
  EXPECT_NEAR(back.x, 1, 1e-12);
  EXPECT_NEAR(back.y, 0, 1e-12);
  EXPECT_EQ(items[0].kind, DrawItem::Kind::Texture);
  EXPECT_EQ(items[1].kind, DrawItem::Kind::Label);
  EXPECT_EQ(items[1].label->text(), "12");
}

TEST_F(SceneGraphTest, ContainsPointTestsTheAccumulatedFrameInTheParentsCoordinates) {
  // A layer moved off the origin, with a button child; the point is given
  // in the layer's coordinates, as the button's parent.
  auto layer = addSprite({100, 200}, {50, 50});
  layer->setAnchorPoint({0, 0});
  auto button = addSprite({25, 25}, {20, 20}, layer);
  EXPECT_TRUE(button->containsPoint({25, 25}));
  EXPECT_TRUE(button->containsPoint({35, 35}));  // edges count
  EXPECT_FALSE(button->containsPoint({125, 225}));

  // The layer's accumulated frame reaches out to a child beyond its own size.
  auto badge = addSprite({70, 25}, {10, 10}, layer);
  EXPECT_TRUE(layer->containsPoint({174, 225}));
  EXPECT_FALSE(layer->containsPoint({176, 225}));
  // Purely geometric: neither alpha nor hidden matter.
  layer->setAlpha(0);
  badge->setHidden(true);
  EXPECT_TRUE(layer->containsPoint({174, 225}));

  // A turned sprite answers for its turned outline's bounding box.
  auto bar = addSprite({0, 0}, {40, 4});
  bar->setZRotation(std::numbers::pi / 2);
  EXPECT_TRUE(bar->containsPoint({0, 19}));
  EXPECT_FALSE(bar->containsPoint({19, 0}));
}

TEST_F(SceneGraphTest, AddingANullNodeOrAnAncestorAsAChildIsAMistakeThatChangesNothing) {
  auto a = addNode({0, 0});
  auto b = addNode({0, 0}, a);
  // Development builds stop at the mistake; release builds refuse the call.
  EXPECT_DEBUG_DEATH(b->addChild(a), "ancestor");  // a is b's parent
  EXPECT_DEBUG_DEATH(b->addChild(b), "ancestor");
  EXPECT_DEBUG_DEATH(b->addChild(nullptr), "null node");
  EXPECT_EQ(a->parent(), scene.get());
  EXPECT_TRUE(b->children().empty());
}

TEST_F(SceneGraphTest, AChildAddedElsewhereLeavesItsOldParent) {
  auto a = addNode({0, 0});
  auto b = addNode({0, 0}, a);
  scene->addChild(b);  // taken from a
  EXPECT_TRUE(a->children().empty());
  scene->removeAllChildren();
  EXPECT_EQ(b->scene(), nullptr);
}

TEST_F(SceneGraphTest, AFrameRunsTouchesTimersUpdateActionsPhysicsInThatOrder) {
  auto car = addBox({100, 100}, {40, 30}, 1, 2);
  auto obstacle = addBall({100, 300}, 10, 2, 1);
  runLoop.scheduledTimer(
      0.02, [&] { scene->log.push_back("timer"); }, false);
  obstacle->runAction(Action::moveToY(100, 0), [&] { scene->log.push_back("completion"); });
  tap({{10, 10}});
  clock.advanceSeconds(0.02);
  frame();
  EXPECT_EQ(scene->log, (std::vector<std::string>{"touches", "timer", "update", "completion",
                                                  "contact", "didSimulatePhysics"}));
  EXPECT_DOUBLE_EQ(scene->lastUpdateTime, 0.02);
}

TEST_F(SceneGraphTest, EachTouchEventReachesTheSceneWithItsTouchesInNodeCoordinates) {
  auto layer = addNode({100, 0});
  Point inLayer;
  scene->onTouches = [&](const TouchSet& touches) {
    inLayer = touches.anyObject()->locationInNode(*layer);
  };
  tap({{10, 20}, {300, 40}});  // two fingers together
  tap({{160, 0}});
  frame();
  ASSERT_EQ(scene->taps.size(), 2u);
  EXPECT_EQ(scene->taps[0], (std::vector<Point>{{10, 20}, {300, 40}}));
  EXPECT_EQ(inLayer, (Point{60, 0}));
  frame();
  EXPECT_EQ(scene->taps.size(), 2u);  // delivered once
}

TEST_F(SceneGraphTest, AspectFillMapsTheSceneOntoALargerViewCropped) {
  // A 320 × 568 scene on a 640 × 1000 view: scale 2 fills the width, the
  // height overflows by 136 points and is cropped evenly.
  scene->setScaleMode(SceneScaleMode::AspectFill);
  const Size view{640, 1000};
  const Point topLeft = scene->sceneToView(view).apply({0, 568});
  EXPECT_NEAR(topLeft.x, 0, 1e-9);
  EXPECT_NEAR(topLeft.y, -68, 1e-9);
  const Point centre = scene->convertPointFromView({320, 500}, view);
  EXPECT_NEAR(centre.x, 160, 1e-9);
  EXPECT_NEAR(centre.y, 284, 1e-9);
}

}  // namespace
}  // namespace kit::testing
