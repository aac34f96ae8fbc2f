// Obstacles: when each road spawns, what it spawns, and the circle that is
// let through.

#include <algorithm>
#include <array>
#include <cstdlib>

#include "game_fixture.h"

using Spawning = GameTest;

TEST_F(Spawning, EachRoadFirstSpawnsTenToNineteenTicksAfterNewGameOnTheTimerGrid) {
  for (unsigned seed : {1u, 2u, 3u}) {
    GameScene& s = start(kPhone, false, seed);
    tapButton(*s.playBtn);
    ASSERT_TRUE(runUntil([&] { return s.startFlag; }));
    const int64_t newGameFrame = frame - 1;
    const std::array<int, 4> next = {s.nexttick1, s.nexttick2, s.nexttick3, s.nexttick4};
    std::array<int64_t, 4> first = {};
    for (frames(1); frame < newGameFrame + 6 * 20; frames(1)) {
      const bool spawned[] = {!!s.lastnode1, !!s.lastnode2, !!s.lastnode3, !!s.lastnode4};
      for (int road = 0; road < 4; ++road)
        first[road] = first[road] ? first[road] : (spawned[road] ? frame - 1 : 0);
    }
    for (int road = 0; road < 4; ++road) {
      EXPECT_TRUE(next[road] >= 10 && next[road] <= 19);
      // Tick 1 comes at the next run-loop pass, then one every six frames.
      EXPECT_EQ(first[road], newGameFrame + 1 + 6 * (next[road] - 1)) << seed << "/" << road;
    }
  }
}

TEST_F(Spawning, NoTwoRectanglesSideBySideInOneCarsRoads) {
  GameScene& s = start();
  // A rectangle drawn beside the partner road's fresh rectangle becomes a
  // circle, for both pairs of roads and both ways round.
  for (auto [first, second] :
       {std::pair{2, 1}, std::pair{1, 2}, std::pair{4, 3}, std::pair{3, 4}}) {
    s.newGame();
    spawn(first, 1);
    const auto swapped = spawn(second, 1);
    EXPECT_EQ(swapped->type(), 0) << "road " << second;
    EXPECT_EQ(swapped->physicsBody()->shape(), kit::PhysicsBody::Shape::Circle);
  }
  // It stands beside a circle, and across the middle.
  s.newGame();
  spawn(2, 0);
  EXPECT_EQ(spawn(1, 1)->type(), 1);
  s.newGame();
  spawn(3, 1);
  EXPECT_EQ(spawn(2, 1)->type(), 1);
  // "Fresh" means a gap from the top edge below 1.8 car heights.
  for (double margin : {-0.01, 0.01}) {
    s.newGame();
    auto partner = spawn(2, 1);
    partner->setPosition({120, 568 + partner->size().height - 42 * 1.8 + margin});
    EXPECT_EQ(spawn(1, 1)->type(), margin < 0 ? 1 : 0) << "margin " << margin;
  }
}

TEST_F(Spawning, TagsFollowTheCarBelowTenPointsAndTakeAnotherDrawFromTen) {
  GameScene& s = start();
  for (int road = 1; road <= 4; ++road) {
    s.newGame();
    EXPECT_EQ(spawn(road, 1)->cr(), road <= 2 ? 0 : 1);
  }
  for (int score : {9, 10}) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
      s.newGame();
      s._score = score;
      kit::RandomSource& random = platform.random;
      random.seed(seed);
      const int kind = random.next() % 2, second = random.next(), third = random.next();
      random.seed(seed);
      s.addObstacleInRoadIdx(3);
      EXPECT_EQ(s.allObstacle.back()->type(), kind);
      EXPECT_EQ(s.allObstacle.back()->cr(), score > 9 ? second % 2 : 1);
      EXPECT_EQ(random.next(), score > 9 ? third : second);  // draws consumed
    }
  }
}

TEST_F(Spawning, ACircleLetPastTheCarsEndsTheRunWhileStillOnScreenAndBlinks) {
  GameScene& s = start();
  play();
  s.enableTimer(false);
  auto circle = spawn(2, 0);  // the left car stays in road 1
  const double carY = s.leftCar->position().y, ch = s.leftCar->size().height;
  for (;;) {
    const double h = circle->size().height;
    const double m = circle->position().y + h * 0.5 + ch * 0.5 + h * 0.1;
    frames(1);
    ASSERT_EQ(s.overFlag, m < carY) << "circle at y " << circle->position().y;
    if (s.overFlag)
      break;
  }
  EXPECT_GT(circle->position().y, 0);  // the cars' line, not the screen's edge

  // Blinks down to 0.4 and back, 0.125 s each way; no flames.
  double lowest = 1;
  for (int i = 0; i < 40; ++i, frames(1))
    lowest = std::min(lowest, circle->alpha());
  EXPECT_NEAR(lowest, 0.4, 0.05);
  EXPECT_EQ(circle->alpha(), 1.0);
  EXPECT_TRUE(s.leftSmoke->hidden() && s.rightSmoke->hidden());
}
