#pragma once

#include "kit/scene/sprite_node.h"

// What an obstacle is; the numbers are the ones dumps and logs show.
enum class ObstacleKind { Circle = 0, Rectangle = 1 };

// A falling obstacle: a sprite with its kind and a spawn tag. Plain data;
// GameScene spawns, moves and removes it.
class Obstacle final : public kit::SpriteNode {
 public:
  using kit::SpriteNode::SpriteNode;

  // A circle is collected for a point; a rectangle crashes.
  ObstacleKind type() const { return type_; }
  void setType(ObstacleKind type) { type_ = type; }
  // A 0/1 tag set at spawn and read by nothing in the game; kept as part of
  // the record.
  int cr() const { return cr_; }
  void setCr(int cr) { cr_ = cr; }

 private:
  ObstacleKind type_ = ObstacleKind::Circle;
  int cr_ = 0;
};
