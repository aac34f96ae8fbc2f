#include "kit/ui/text_layout.h"

#include <string>
#include <utility>

#include "kit/foundation/graphics.h"

namespace kit {

TextLayout::TextLayout(TextBlock block) : block_(std::move(block)) {
  const Size box = block_.box;
  if (block_.text.empty() || !(box.width > 0) || !(box.height > 0))
    return;
  metrics_ = Graphics::current().text().layout(block_);
}

void TextLayout::warmUp() {
  Graphics::current().text().warmUp();
}

TextBitmap TextLayout::render(Size area, double scale, Color color) const {
  return Graphics::current().text().render(block_, metrics_, area, scale, color);
}

Size sizeWithFont(std::string_view text, const Font& font, Size constrainedToSize,
                  LineBreakMode lineBreakMode) {
  TextBlock block;
  block.text = std::string(text);
  block.font = font;
  block.box = constrainedToSize;
  block.lineBreakMode = lineBreakMode;
  return TextLayout(std::move(block)).size();
}

}  // namespace kit
