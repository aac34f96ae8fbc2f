// sizeWithFont: a TextLayout of the text in the constraint, on any backend.
#include <string>
#include <utility>

#include "kit/ui/text_layout.h"

namespace kit {

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
