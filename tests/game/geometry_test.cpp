// Where things are when the scene has just been built, on a phone and on a
// pad: what a player would notice a pixel off.

#include "game_fixture.h"

using Geometry = GameTest;

TEST_F(Geometry, OnAPhoneTheCarsSitInTheOuterRoadsWithTrimmedBodies) {
  GameScene& s = start(kPhone);
  EXPECT_DOUBLE_EQ(s.leftCar().position().x, 40);
  EXPECT_DOUBLE_EQ(s.rightCar().position().x, 280);
  for (const Car* car : {&s.leftCar(), &s.rightCar()}) {
    EXPECT_DOUBLE_EQ(car->position().y, 92);
    EXPECT_EQ(car->size(), (kit::Size{56, 42}));
    EXPECT_DOUBLE_EQ(car->physicsBody()->size().width, 56 * 0.7);
    EXPECT_DOUBLE_EQ(car->physicsBody()->size().height, 42 * 0.94);
  }
}

TEST_F(Geometry, OnAPhoneTheLinesAndTheScoreSitWhereDesigned) {
  GameScene& s = start(kPhone);
  // Lines between roads 1-2 and 3-4 only, two heights tall, to scroll by one.
  EXPECT_EQ(s.leftLineNode().position(), (kit::Point{80, 568}));
  EXPECT_EQ(s.rightLineNode().position(), (kit::Point{240, 568}));
  EXPECT_EQ(s.leftLineNode().size(), (kit::Size{5, 1136}));
  EXPECT_DOUBLE_EQ(s.scoreNode().position().y, 536);
}

TEST_F(Geometry, OnAPhoneObstaclesStartJustAboveTheTopAtTheirRoadsCentre) {
  GameScene& s = start(kPhone);
  const double centres[] = {40, 120, 200, 280};
  for (int road = 1; road <= 4; ++road) {
    for (ObstacleKind kind : {kCircle, kRect}) {
      s.newGame();  // no partner rectangle to turn a rectangle into a circle
      const auto o = spawn(road, kind);
      EXPECT_EQ(o->texture().name(), kind == kRect ? "rect" : "circle");
      EXPECT_DOUBLE_EQ(o->position().x, centres[road - 1]);
      EXPECT_DOUBLE_EQ(o->size().width, 48);
      EXPECT_DOUBLE_EQ(o->size().height, 31.2);
      EXPECT_DOUBLE_EQ(o->position().y - o->size().height * 0.5, 568);  // just above the top
    }
  }
}

TEST_F(Geometry, OnAPhoneTheButtonsSitWhereDesignedAndTallPhonesSpreadTheScoreScreen) {
  GameScene& s = start(kPhone);
  EXPECT_DOUBLE_EQ(s.playBtn().size().width, 320 / 3.0);
  EXPECT_EQ(s.playBtn().position(), (kit::Point{160, 284}));
  const double again = s.againBtn().size().width;
  EXPECT_DOUBLE_EQ(again, 320 / 3.5);
  EXPECT_DOUBLE_EQ(s.againBtn().position().y, 284 - 0.4 * again);
  // H > 500 counts as tall: 500 itself does not.
  for (double height : {500.0, 501.0}) {
    GameScene& phone = start({320, height});
    const double gap = phone.overScoreNode().position().y - phone.againBtn().position().y;
    EXPECT_DOUBLE_EQ(gap, (height > 500 ? 1.6 : 1.4) * phone.againBtn().size().width) << height;
  }
}

TEST_F(Geometry, ARoadIndexOutOfRangeIsAMistakeThatSpawnsNothing) {
  GameScene& s = start(kPhone);
  // Development builds stop at the mistake; release builds refuse the call.
  EXPECT_DEBUG_DEATH(s.addObstacleInRoadIdx(0), "road index out of range");
  EXPECT_DEBUG_DEATH(s.addObstacleInRoadIdx(5), "road index out of range");
  EXPECT_TRUE(s.allObstacle().empty());
}

TEST_F(Geometry, APadHasWiderLinesBiggerTextHigherCarsAndSmallerButtons) {
  GameScene& s = start(kPad, true);
  EXPECT_EQ(s.leftLineNode().size().width, 8);
  EXPECT_EQ(s.scoreNode().fontSize(), 70);
  EXPECT_DOUBLE_EQ(s.scoreNode().position().y, 1024 - 56);
  EXPECT_DOUBLE_EQ(s.leftCar().size().width, 134.4);
  EXPECT_DOUBLE_EQ(s.leftCar().position().y - s.leftCar().size().height, 90);  // 50 on a phone
  EXPECT_DOUBLE_EQ(s.playBtn().size().width, 768 / 4.5);
  EXPECT_DOUBLE_EQ(s.overScoreNode().position().y - s.againBtn().position().y,
                   1.4 * s.againBtn().size().width);
}
