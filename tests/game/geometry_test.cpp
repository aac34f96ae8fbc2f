// What the scene looks like when it has just been built: sizes and positions
// on a phone and on a pad, the tree, the overlay screens and the physics
// bodies.

#include <string>
#include <vector>

#include "game_fixture.h"
#include "kit/scene/physics_body.h"

namespace {

double side(const kit::SpriteNode& node) {
  return node.size().width;
}

}  // namespace

using Geometry = GameTest;

TEST_F(Geometry, PhoneRoadCarsAndScoreSitWhereThePlayerExpectsThem) {
  GameScene& s = start(kPhone);

  EXPECT_DOUBLE_EQ(s.leftCar->position().x, 40);
  EXPECT_DOUBLE_EQ(s.rightCar->position().x, 280);
  EXPECT_DOUBLE_EQ(s.leftCar->position().y, 92);
  EXPECT_DOUBLE_EQ(s.rightCar->position().y, 92);
  EXPECT_DOUBLE_EQ(s.leftCar->size().width, 56);
  EXPECT_DOUBLE_EQ(s.leftCar->size().height, 42);
  EXPECT_EQ(s.rightCar->size(), s.leftCar->size());
  EXPECT_EQ(s.leftCar->texture().name(), "car");
  EXPECT_EQ(s.leftCar->caridx(), 0);
  EXPECT_EQ(s.leftCar->carpos(), 0);
  EXPECT_EQ(s.rightCar->caridx(), 1);
  EXPECT_EQ(s.rightCar->carpos(), 1);

  // Lane lines between roads 1-2 and 3-4 only, twice the scene height, ready
  // to scroll down by one height.
  EXPECT_DOUBLE_EQ(s.leftLineNode->position().x, 80);
  EXPECT_DOUBLE_EQ(s.rightLineNode->position().x, 240);
  EXPECT_DOUBLE_EQ(s.leftLineNode->position().y, 568);
  EXPECT_EQ(s.leftLineNode->size(), (kit::Size{5, 1136}));
  EXPECT_EQ(s.rightLineNode->size(), (kit::Size{5, 1136}));

  EXPECT_DOUBLE_EQ(s.scoreNode->position().x, 160);
  EXPECT_DOUBLE_EQ(s.scoreNode->position().y, 536);
  EXPECT_EQ(s.scoreNode->fontSize(), 40);
  EXPECT_EQ(s.scoreNode->fontName(), "Arial-BoldMT");
  EXPECT_EQ(s.scoreNode->text(), "0");
  EXPECT_EQ(s.scoreNode->fontColor(), kit::Color::black());
  EXPECT_EQ(s.scoreNode->horizontalAlignmentMode(), kit::LabelHorizontalAlignmentMode::Center);
  EXPECT_EQ(s.scoreNode->verticalAlignmentMode(), kit::LabelVerticalAlignmentMode::Center);

  // Crash sprites: hidden squares twice a car wide, over the cars.
  for (const auto& smoke : {s.leftSmoke, s.rightSmoke}) {
    EXPECT_TRUE(smoke->hidden());
    EXPECT_EQ(smoke->size(), (kit::Size{112, 112}));
    EXPECT_EQ(smoke->texture().name(), "fire1");
    EXPECT_EQ(smoke->zPosition(), 1.0);
  }
  EXPECT_EQ(s.leftSmoke->position(), s.leftCar->position());
  EXPECT_EQ(s.rightSmoke->position(), s.rightCar->position());
  std::vector<std::string> frames;
  for (const auto& texture : s.smokeAnim)
    frames.push_back(texture.name());
  EXPECT_EQ(frames,
            (std::vector<std::string>{"fire1", "fire2", "fire3", "fire4", "fire5", "fire6"}));
}

TEST_F(Geometry, ObstaclesAreCentredOnTheirRoadAndStartJustAboveTheTop) {
  GameScene& s = start(kPhone);
  const double centres[] = {40, 120, 200, 280};
  for (int road = 1; road <= 4; ++road) {
    for (int kind : {0, 1}) {
      s.newGame();  // no partner rectangle to turn a rectangle into a circle
      auto obstacle = spawn(road, kind);
      EXPECT_EQ(obstacle->type(), kind);
      EXPECT_EQ(obstacle->texture().name(), kind == 1 ? "rect" : "circle");
      EXPECT_DOUBLE_EQ(obstacle->position().x, centres[road - 1]);
      EXPECT_DOUBLE_EQ(obstacle->size().width, 48);
      EXPECT_DOUBLE_EQ(obstacle->size().height, 31.2);
      // The lower edge lies on the scene's top edge.
      EXPECT_DOUBLE_EQ(obstacle->position().y - obstacle->size().height * 0.5, 568);
      EXPECT_EQ(obstacle->parent(), s.obstacleLayer.get());
    }
  }
  // Anything but roads 1 to 4 spawns nothing.
  const auto count = s.allObstacle.size();
  s.addObstacleInRoadIdx(0);
  s.addObstacleInRoadIdx(5);
  EXPECT_EQ(s.allObstacle.size(), count);
}

TEST_F(Geometry, BodiesAreSmallerThanTheSpritesAndOnlyCarsMeetObstacles) {
  GameScene& s = start(kPhone);
  for (const auto& car : {s.leftCar, s.rightCar}) {
    const auto& body = car->physicsBody();
    ASSERT_TRUE(body);
    EXPECT_EQ(body->shape(), kit::PhysicsBody::Shape::Rectangle);
    EXPECT_DOUBLE_EQ(body->size().width, 56 * 0.7);
    EXPECT_DOUBLE_EQ(body->size().height, 42 * 0.94);
    EXPECT_EQ(body->categoryBitMask(), 1u);
    EXPECT_EQ(body->contactTestBitMask(), 2u);
    EXPECT_EQ(body->collisionBitMask(), 0u);
    EXPECT_FALSE(body->affectedByGravity());
  }
  const auto rect = spawn(1, 1)->physicsBody();
  EXPECT_EQ(rect->shape(), kit::PhysicsBody::Shape::Rectangle);
  EXPECT_DOUBLE_EQ(rect->size().width, 48 * 0.7);
  EXPECT_DOUBLE_EQ(rect->size().height, 31.2 * 0.94);
  const auto circle = spawn(3, 0)->physicsBody();
  EXPECT_EQ(circle->shape(), kit::PhysicsBody::Shape::Circle);
  EXPECT_DOUBLE_EQ(circle->size().width, 48);  // radius 24
  for (const auto& body : {rect, circle}) {
    EXPECT_EQ(body->categoryBitMask(), 2u);
    EXPECT_EQ(body->contactTestBitMask(), 1u);
    EXPECT_EQ(body->collisionBitMask(), 0u);
    EXPECT_FALSE(body->affectedByGravity());
  }
  EXPECT_EQ(s.physicsWorld().gravity(), (kit::Vector{0, 0}));
  EXPECT_EQ(s.physicsWorld().contactDelegate(), &s);
}

TEST_F(Geometry, TreeOrderDecidesWhatDrawsOverWhat) {
  GameScene& s = start(kPhone);
  const std::vector<kit::NodePtr> top = {s.backgroundLayer, s.obstacleLayer, s.leftCar,
                                         s.rightCar,        s.leftSmoke,     s.rightSmoke,
                                         s.homeLayer,       s.helpLayer,     s.overLayer};
  EXPECT_EQ(s.children(), top);
  ASSERT_EQ(s.backgroundLayer->children().size(), 4u);
  EXPECT_EQ(s.backgroundLayer->children()[0], s.leftLineNode);
  EXPECT_EQ(s.backgroundLayer->children()[1], s.rightLineNode);
  EXPECT_EQ(s.backgroundLayer->children()[3], s.scoreNode);

  // The score backdrop is the one unnamed node: behind the label, same place.
  auto backdrop = std::dynamic_pointer_cast<kit::SpriteNode>(s.backgroundLayer->children()[2]);
  ASSERT_TRUE(backdrop);
  EXPECT_EQ(backdrop->texture().name(), "scorebg");
  EXPECT_DOUBLE_EQ(backdrop->size().width, 320.0 / 3);
  EXPECT_DOUBLE_EQ(backdrop->size().height, 55);
  EXPECT_EQ(backdrop->position(), s.scoreNode->position());
  EXPECT_EQ(backdrop->zPosition(), 1.0);
  EXPECT_EQ(s.scoreNode->zPosition(), 1.0);

  EXPECT_EQ(s.backgroundLayer->texture().name(), "bg.png");
  EXPECT_EQ(s.backgroundLayer->anchorPoint(), (kit::Point{0, 0}));
  EXPECT_EQ(s.backgroundLayer->size(), kPhone);
  EXPECT_EQ(s.obstacleLayer->color(), kit::Color::clear());
  EXPECT_EQ(s.obstacleLayer->anchorPoint(), (kit::Point{0, 0}));
  EXPECT_EQ(s.leftCar->zPosition(), 1.0);
  EXPECT_EQ(s.rightCar->zPosition(), 1.0);
  EXPECT_EQ(s.obstacleLayer->zPosition(), 0.0);

  // Declared but never created.
  EXPECT_FALSE(s.leftTail);
  EXPECT_FALSE(s.rightTail);
  EXPECT_FALSE(s.soundBtn);
  EXPECT_FALSE(s.rateBtn);
  EXPECT_FALSE(s.homeBtn);
  EXPECT_FALSE(s.overRateBtn);
}

TEST_F(Geometry, OverlayScreensCoverTheSceneWithHomeUp) {
  GameScene& s = start(kPhone);
  for (const auto& layer : {s.homeLayer, s.helpLayer, s.overLayer}) {
    EXPECT_EQ(layer->color(), (kit::Color{0, 0, 0, 0.75}));
    EXPECT_EQ(layer->size(), kPhone);
    EXPECT_EQ(layer->anchorPoint(), (kit::Point{0, 0}));
    EXPECT_EQ(layer->position(), (kit::Point{0, 0}));
    EXPECT_EQ(layer->zPosition(), 2.0);
  }
  EXPECT_EQ(s.homeLayer->alpha(), 1.0);
  EXPECT_EQ(s.helpLayer->alpha(), 0.0);
  EXPECT_EQ(s.overLayer->alpha(), 0.0);

  EXPECT_EQ(s.playBtn->texture().name(), "play");
  EXPECT_DOUBLE_EQ(side(*s.playBtn), 320 / 3.0);
  EXPECT_EQ(s.playBtn->position(), (kit::Point{160, 284}));
  EXPECT_EQ(s.playBtn->parent(), s.homeLayer.get());

  // Help: the picture, and its start button one button side below it.
  auto picture = std::dynamic_pointer_cast<kit::SpriteNode>(s.helpLayer->children()[0]);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->texture().name(), "help");
  EXPECT_DOUBLE_EQ(picture->size().width, 208);
  EXPECT_DOUBLE_EQ(picture->size().height, 312);
  EXPECT_DOUBLE_EQ(picture->position().y, 284 + 320 / 6.0);
  EXPECT_EQ(s.helpPlayBtn->texture().name(), "helpstart");
  EXPECT_DOUBLE_EQ(side(*s.helpPlayBtn), 320 / 6.0);
  EXPECT_DOUBLE_EQ(s.helpPlayBtn->position().y, 284 + 320 / 6.0 - 156 - 320 / 6.0);

  // Game over: play-again button, score and best lines over their backdrop,
  // title near the top.
  const double again = 320 / 3.5;
  EXPECT_DOUBLE_EQ(side(*s.againBtn), again);
  EXPECT_DOUBLE_EQ(s.againBtn->position().y, 284 - 0.4 * again);
  EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.againBtn->position().y, 1.6 * again);
  EXPECT_EQ(s.overScoreNode->fontSize(), 35);
  EXPECT_EQ(s.overBestNode->fontSize(), 20);
  EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.overBestNode->position().y, 27.5);
  EXPECT_EQ(s.overBestNode->text(), "记 录 : 5");
  EXPECT_EQ(s.overScoreNode->text(), "0");
  EXPECT_EQ(s.overScoreNode->fontColor(), (kit::Color{0.02, 0.7, 1.0, 1.0}));
  const auto& over = s.overLayer->children();
  ASSERT_EQ(over.size(), 5u);
  EXPECT_EQ(over[0], s.againBtn);
  EXPECT_EQ(over[2], s.overScoreNode);
  EXPECT_EQ(over[3], s.overBestNode);
  auto backdrop = std::dynamic_pointer_cast<kit::SpriteNode>(over[1]);
  auto title = std::dynamic_pointer_cast<kit::SpriteNode>(over[4]);
  ASSERT_TRUE(backdrop && title);
  EXPECT_EQ(backdrop->texture().name(), "overscorebg");
  EXPECT_DOUBLE_EQ(backdrop->size().width, 128);
  EXPECT_DOUBLE_EQ(backdrop->position().y,
                   (s.overScoreNode->position().y + s.overBestNode->position().y) / 2);
  EXPECT_EQ(title->texture().name(), "gameover");
  EXPECT_DOUBLE_EQ(title->position().y, 568 - 1.5 * (0.65 * 320 / 4.5));
}

TEST_F(Geometry, ShortPhonesAndPadsKeepTheScoreCloserToThePlayAgainButton) {
  for (double height : {480.0, 500.0}) {
    GameScene& s = start({320, height});
    EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.againBtn->position().y,
                     1.4 * side(*s.againBtn))
        << "height " << height;
  }
  GameScene& s = start({320, 501});
  EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.againBtn->position().y,
                   1.6 * side(*s.againBtn));
}

TEST_F(Geometry, PadUsesWiderLinesBiggerTextHigherCarsAndSmallerButtons) {
  GameScene& s = start(kPad, true);
  EXPECT_EQ(s.leftLineNode->size().width, 8);
  EXPECT_EQ(s.scoreNode->fontSize(), 70);
  EXPECT_DOUBLE_EQ(s.scoreNode->position().y, 1024 - 56);
  const double ch = s.leftCar->size().height;
  EXPECT_DOUBLE_EQ(s.leftCar->size().width, 134.4);
  EXPECT_DOUBLE_EQ(s.leftCar->position().y - ch, 90);  // 50 on a phone
  EXPECT_DOUBLE_EQ(s.leftCar->position().x, 96);
  EXPECT_DOUBLE_EQ(s.rightCar->position().x, 672);

  EXPECT_DOUBLE_EQ(side(*s.playBtn), 768 / 4.5);
  EXPECT_DOUBLE_EQ(side(*s.helpPlayBtn), 768 / 7.0);
  EXPECT_DOUBLE_EQ(side(*s.againBtn), 768 / 4.5);
  EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.againBtn->position().y,
                   1.4 * side(*s.againBtn));
  EXPECT_EQ(s.overScoreNode->fontSize(), 60);
  EXPECT_EQ(s.overBestNode->fontSize(), 40);
}

TEST_F(Geometry, ANewSceneStandsStillOnTheHomeScreen) {
  platform.defaults.setBool(false, "sound");
  GameScene& s = start(kPhone);
  EXPECT_FALSE(s.startFlag);
  EXPECT_FALSE(s.overFlag);
  EXPECT_FALSE(s.homeFlag);
  EXPECT_FALSE(s.soundFlag);  // from the stored preference
  EXPECT_EQ(s._timer->fireDate(), kit::Timer::kDistantFuture);

  advance(5);
  EXPECT_TRUE(s.allObstacle.empty());
  EXPECT_EQ(s.leftLineNode->position().y, 568);
  EXPECT_EQ(s.tickcnt1 + s.tickcnt2 + s.tickcnt3 + s.tickcnt4, 0);
  EXPECT_EQ(s.homeLayer->alpha(), 1.0);
}
