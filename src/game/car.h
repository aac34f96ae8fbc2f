#pragma once

#include "kit/scene/sprite_node.h"

// One of the two cars: a sprite that knows which car it is and which of its
// two roads it is in or heading for. Plain data; GameScene steers it.
class Car final : public kit::SpriteNode {
 public:
  using kit::SpriteNode::SpriteNode;

  // 0 the left car, 1 the right car; set once at creation.
  int caridx() const { return caridx_; }
  void setCaridx(int caridx) { caridx_ = caridx; }
  // 0 the car's outer-left road (road 1 or 3), 1 the other (road 2 or 4).
  // Flips as soon as a lane change starts, before the car arrives.
  int carpos() const { return carpos_; }
  void setCarpos(int carpos) { carpos_ = carpos; }

 private:
  int caridx_ = 0;
  int carpos_ = 0;
};
