#include "kit/scene/sprite_node.h"

#include <utility>

namespace kit {

SpriteNode::SpriteNode(Texture texture, Size size) : texture_(std::move(texture)), size_(size) {}

SpriteNode::SpriteNode(Color color, Size size) : color_(color), size_(size) {}

std::shared_ptr<SpriteNode> SpriteNode::spriteNodeWithImageNamed(const std::string& name) {
  Texture texture(name);
  const Size size = texture.size();
  return std::make_shared<SpriteNode>(std::move(texture), size);
}

std::shared_ptr<SpriteNode> SpriteNode::spriteNodeWithTexture(Texture texture, Size size) {
  return std::make_shared<SpriteNode>(std::move(texture), size);
}

std::shared_ptr<SpriteNode> SpriteNode::spriteNodeWithColor(Color color, Size size) {
  return std::make_shared<SpriteNode>(color, size);
}

void SpriteNode::setTexture(Texture texture) {
  if (texture == texture_ && texture.size() == texture_.size())
    return;
  texture_ = std::move(texture);
  contentChanged();
}

void SpriteNode::setColor(Color color) {
  if (color == color_)
    return;
  color_ = color;
  contentChanged();
}

void SpriteNode::setSize(Size size) {
  if (size == size_)
    return;
  size_ = size;
  contentChanged();
}

void SpriteNode::setAnchorPoint(Point anchor) {
  if (anchor == anchorPoint_)
    return;
  anchorPoint_ = anchor;
  contentChanged();
}

Rect SpriteNode::frame() const {
  const Rect local{{-anchorPoint_.x * size_.width, -anchorPoint_.y * size_.height}, size_};
  return transform().applyToRect(local);
}

}  // namespace kit
