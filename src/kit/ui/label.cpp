#include "kit/ui/label.h"

namespace kit {

Label::Label(Rect frame) : View(frame) {
  setUserInteractionEnabled(false);
}

Size Label::sizeThatFits(Size size) const {
  TextBlock block = textBlock();
  block.box = {size.width > 0 ? size.width : TextBlock::kUnbounded,
               size.height > 0 ? size.height : TextBlock::kUnbounded};
  return TextLayout(std::move(block)).size();
}

TextBlock Label::textBlock() const {
  TextBlock block;
  block.text = text_;
  block.font = font_;
  block.box = bounds().size;
  block.lineBreakMode = lineBreakMode_;
  block.numberOfLines = numberOfLines_;
  block.alignment = textAlignment_;
  return block;
}

std::string Label::describe() const {
  return "text=\"" + text_ + "\"";
}

}  // namespace kit
