#include "kit/scene/label_node.h"

#include <utility>

namespace kit {

LabelNode::LabelNode(std::string fontName) : fontName_(std::move(fontName)) {}

std::shared_ptr<LabelNode> LabelNode::labelNodeWithFontNamed(std::string fontName) {
  return std::make_shared<LabelNode>(std::move(fontName));
}

void LabelNode::setText(std::string text) {
  if (text == text_)
    return;
  text_ = std::move(text);
  contentChanged();
}

void LabelNode::setFontName(std::string name) {
  if (name == fontName_)
    return;
  fontName_ = std::move(name);
  contentChanged();
}

void LabelNode::setFontSize(double points) {
  if (points == fontSize_)
    return;
  fontSize_ = points;
  contentChanged();
}

void LabelNode::setFontColor(Color color) {
  if (color == fontColor_)
    return;
  fontColor_ = color;
  contentChanged();
}

void LabelNode::setHorizontalAlignmentMode(LabelHorizontalAlignmentMode mode) {
  if (mode == horizontal_)
    return;
  horizontal_ = mode;
  contentChanged();
}

void LabelNode::setVerticalAlignmentMode(LabelVerticalAlignmentMode mode) {
  if (mode == vertical_)
    return;
  vertical_ = mode;
  contentChanged();
}

}  // namespace kit
