#pragma once

#include <string>

#include "kit/ui/text_layout.h"
#include "kit/ui/view.h"

namespace kit {

// A view that shows text. Defaults as the platform's: system font 17, black,
// left aligned, one line truncated at the tail, clear background, user
// interaction off. The text is drawn centred vertically in the bounds.
class Label : public View {
 public:
  explicit Label(Rect frame = {});
  std::string className() const override { return "Label"; }

  const std::string& text() const { return text_; }
  void setText(std::string text) { text_ = std::move(text); }
  const Font& font() const { return font_; }
  void setFont(Font font) { font_ = std::move(font); }
  Color textColor() const { return textColor_; }
  void setTextColor(Color color) { textColor_ = color; }
  TextAlignment textAlignment() const { return textAlignment_; }
  void setTextAlignment(TextAlignment alignment) { textAlignment_ = alignment; }
  // 0 means as many lines as the height allows.
  int numberOfLines() const { return numberOfLines_; }
  void setNumberOfLines(int lines) { numberOfLines_ = lines < 0 ? 0 : lines; }
  LineBreakMode lineBreakMode() const { return lineBreakMode_; }
  void setLineBreakMode(LineBreakMode mode) { lineBreakMode_ = mode; }

  // The text's size within `size`; a dimension of zero or less is unbounded.
  Size sizeThatFits(Size size) const override;

  // What the renderer draws: the text laid out in the current bounds.
  TextBlock textBlock() const;

 protected:
  std::string describe() const override;

 private:
  std::string text_;
  Font font_ = Font::systemFontOfSize(17);
  Color textColor_ = Color::black();
  TextAlignment textAlignment_ = TextAlignment::Left;
  int numberOfLines_ = 1;
  LineBreakMode lineBreakMode_ = LineBreakMode::TruncateTail;
};

}  // namespace kit
