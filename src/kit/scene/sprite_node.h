#pragma once

#include <memory>
#include <string>

#include "kit/foundation/color.h"
#include "kit/scene/node.h"
#include "kit/scene/texture.h"

namespace kit {

// A textured or coloured rectangle. The
// rectangle has `size` points and is placed so that `anchorPoint` (a unit
// point, (0, 0) the lower-left corner, (1, 1) the upper-right) lies on the
// node's position. With a texture the image is drawn; without one the
// rectangle is filled with `color`. Subclass it for sprites that carry game
// data, and create those with std::make_shared<YourSprite>().
class SpriteNode : public Node {
 public:
  // No texture, white, size zero.
  SpriteNode() = default;
  SpriteNode(Texture texture, Size size);
  SpriteNode(Color color, Size size);

  // Sized to the image's natural size when the texture knows it, otherwise
  // zero until setSize.
  static std::shared_ptr<SpriteNode> spriteNodeWithImageNamed(const std::string& name);
  static std::shared_ptr<SpriteNode> spriteNodeWithTexture(Texture texture, Size size);
  static std::shared_ptr<SpriteNode> spriteNodeWithColor(Color color, Size size);

  const Texture& texture() const { return texture_; }
  void setTexture(Texture texture);
  // The fill when there is no texture (alpha included).
  Color color() const { return color_; }
  void setColor(Color color);
  Size size() const { return size_; }
  void setSize(Size size);
  Point anchorPoint() const { return anchorPoint_; }
  void setAnchorPoint(Point anchor);

  // The sized rectangle around the anchor, turned by zRotation, in the
  // parent's coordinates.
  Rect frame() const override;

 private:
  Texture texture_;
  Color color_ = Color::white();
  Size size_;
  Point anchorPoint_{0.5, 0.5};
};

}  // namespace kit
