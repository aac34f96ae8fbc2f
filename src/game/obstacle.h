#pragma once

#include "kit/scene/sprite_node.h"

// A falling obstacle: a sprite with its kind and a spawn tag. Plain data;
// GameScene spawns, moves and removes it.
class Obstacle final : public kit::SpriteNode {
 public:
  using kit::SpriteNode::SpriteNode;

  // 0 a circle (collected for a point); any other value a rectangle (crashes).
  int type() const { return type_; }
  void setType(int type) { type_ = type; }
  // A 0/1 tag set at spawn and read by nothing in the game; kept as part of
  // the record.
  int cr() const { return cr_; }
  void setCr(int cr) { cr_ = cr; }

 private:
  int type_ = 0;
  int cr_ = 0;
};
