// Where things are when the scene has just been built, on a phone and on a
// pad: what a player would notice a pixel off.

#include "game_fixture.h"

using Geometry = GameTest;

namespace {

double side(const kit::SpriteNode& node) {
  return node.size().width;
}

}  // namespace

TEST_F(Geometry, OnAPhoneRoadsCarsObstaclesAndScoreSitWhereDesigned) {
  GameScene& s = start(kPhone);
  EXPECT_DOUBLE_EQ(s.leftCar->position().x, 40);
  EXPECT_DOUBLE_EQ(s.rightCar->position().x, 280);
  for (const auto& car : {s.leftCar, s.rightCar}) {
    EXPECT_DOUBLE_EQ(car->position().y, 92);
    EXPECT_DOUBLE_EQ(car->size().width, 56);
    EXPECT_DOUBLE_EQ(car->size().height, 42);
    EXPECT_DOUBLE_EQ(car->physicsBody()->size().width, 56 * 0.7);
    EXPECT_DOUBLE_EQ(car->physicsBody()->size().height, 42 * 0.94);
  }
  // Lines between roads 1-2 and 3-4 only, two heights tall, to scroll by one.
  EXPECT_EQ(s.leftLineNode->position(), (kit::Point{80, 568}));
  EXPECT_EQ(s.rightLineNode->position(), (kit::Point{240, 568}));
  EXPECT_EQ(s.leftLineNode->size(), (kit::Size{5, 1136}));
  EXPECT_DOUBLE_EQ(s.scoreNode->position().y, 536);
  EXPECT_EQ(s.scoreNode->fontSize(), 40);
  // Crash sprites: hidden squares twice a car wide.
  EXPECT_EQ(s.leftSmoke->size(), (kit::Size{112, 112}));
  EXPECT_TRUE(s.leftSmoke->hidden() && s.rightSmoke->hidden());

  const double centres[] = {40, 120, 200, 280};
  for (int road = 1; road <= 4; ++road) {
    for (int kind : {0, 1}) {
      s.newGame();  // no partner rectangle to turn a rectangle into a circle
      const auto o = spawn(road, kind);
      EXPECT_EQ(o->texture().name(), kind == 1 ? "rect" : "circle");
      EXPECT_DOUBLE_EQ(o->position().x, centres[road - 1]);
      EXPECT_DOUBLE_EQ(o->size().width, 48);
      EXPECT_DOUBLE_EQ(o->size().height, 31.2);
      EXPECT_DOUBLE_EQ(o->position().y - o->size().height * 0.5, 568);  // just above the top
    }
  }
  const auto count = s.allObstacle.size();
  s.addObstacleInRoadIdx(0);
  s.addObstacleInRoadIdx(5);
  EXPECT_EQ(s.allObstacle.size(), count);
}

TEST_F(Geometry, DrawingOrderPutsCarsAndFlamesOverObstaclesAndScreensOverAll) {
  GameScene& s = start(kPhone);
  const std::vector<kit::NodePtr> top = {s.backgroundLayer, s.obstacleLayer, s.leftCar,
                                         s.rightCar,        s.leftSmoke,     s.rightSmoke,
                                         s.homeLayer,       s.helpLayer,     s.overLayer};
  EXPECT_EQ(s.children(), top);
  EXPECT_EQ(s.backgroundLayer->children().back(), s.scoreNode);
  for (const kit::NodePtr& node :
       std::vector<kit::NodePtr>{s.leftCar, s.rightCar, s.leftSmoke, s.rightSmoke}) {
    EXPECT_EQ(node->zPosition(), 1.0);
  }
  for (const auto& layer : {s.homeLayer, s.helpLayer, s.overLayer}) {
    EXPECT_EQ(layer->zPosition(), 2.0);
    EXPECT_EQ(layer->color(), (kit::Color{0, 0, 0, 0.75}));
  }
  // Home is up, help and game over down; the four never-built fields stay null.
  EXPECT_EQ(s.homeLayer->alpha(), 1.0);
  EXPECT_EQ(s.helpLayer->alpha() + s.overLayer->alpha(), 0.0);
  EXPECT_FALSE(s.leftTail || s.rightTail || s.soundBtn || s.rateBtn || s.homeBtn || s.overRateBtn);
  EXPECT_EQ(s.overBestNode->text(), "记 录 : 5");
}

TEST_F(Geometry, ButtonsAndScoreLinesOnPhonesShortAndTall) {
  GameScene& s = start(kPhone);
  EXPECT_DOUBLE_EQ(side(*s.playBtn), 320 / 3.0);
  EXPECT_EQ(s.playBtn->position(), (kit::Point{160, 284}));
  EXPECT_DOUBLE_EQ(side(*s.helpPlayBtn), 320 / 6.0);
  const double again = side(*s.againBtn);
  EXPECT_DOUBLE_EQ(again, 320 / 3.5);
  EXPECT_DOUBLE_EQ(s.againBtn->position().y, 284 - 0.4 * again);
  EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.againBtn->position().y, 1.6 * again);
  EXPECT_DOUBLE_EQ(s.overScoreNode->position().y - s.overBestNode->position().y, 35 / 2.0 + 10);

  // H > 500 counts as tall: 500 itself does not.
  for (double height : {480.0, 500.0, 501.0}) {
    GameScene& phone = start({320, height});
    const double gap = phone.overScoreNode->position().y - phone.againBtn->position().y;
    EXPECT_DOUBLE_EQ(gap, (height > 500 ? 1.6 : 1.4) * side(*phone.againBtn)) << height;
  }
}

TEST_F(Geometry, APadHasWiderLinesBiggerTextHigherCarsAndSmallerButtons) {
  GameScene& s = start(kPad, true);
  EXPECT_EQ(s.leftLineNode->size().width, 8);
  EXPECT_EQ(s.scoreNode->fontSize(), 70);
  EXPECT_DOUBLE_EQ(s.scoreNode->position().y, 1024 - 56);
  EXPECT_DOUBLE_EQ(s.leftCar->size().width, 134.4);
  EXPECT_DOUBLE_EQ(s.leftCar->position().y - s.leftCar->size().height, 90);  // 50 on a phone
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
  EXPECT_FALSE(s.startFlag || s.overFlag || s.homeFlag);
  EXPECT_FALSE(s.soundFlag);  // from the stored preference
  advance(5);
  EXPECT_TRUE(s.allObstacle.empty());
  EXPECT_EQ(s.leftLineNode->position().y, 568);
  EXPECT_EQ(s.tickcnt1 + s.tickcnt2 + s.tickcnt3 + s.tickcnt4, 0);
}
