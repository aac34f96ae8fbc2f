#pragma once

#include <memory>
#include <string>

#include "kit/foundation/color.h"
#include "kit/scene/node.h"

namespace kit {

// Where the text sits horizontally relative to the node's position.
enum class LabelHorizontalAlignmentMode { Center = 0, Left = 1, Right = 2 };
// Where the text sits vertically relative to the node's position.
enum class LabelVerticalAlignmentMode { Baseline = 0, Center = 1, Top = 2, Bottom = 3 };

// A line of text. The scene only stores what to
// draw; the renderer lays the text out with the named font at fontSize points
// and places it by the alignment modes. Text is UTF-8.
class LabelNode : public Node {
 public:
  LabelNode() = default;
  explicit LabelNode(std::string fontName);

  static std::shared_ptr<LabelNode> labelNodeWithFontNamed(std::string fontName);

  const std::string& text() const { return text_; }
  void setText(std::string text);
  // A PostScript or family name ("Arial-BoldMT"); the renderer resolves it.
  const std::string& fontName() const { return fontName_; }
  void setFontName(std::string name);
  double fontSize() const { return fontSize_; }
  void setFontSize(double points);
  Color fontColor() const { return fontColor_; }
  void setFontColor(Color color);
  LabelHorizontalAlignmentMode horizontalAlignmentMode() const { return horizontal_; }
  void setHorizontalAlignmentMode(LabelHorizontalAlignmentMode mode);
  LabelVerticalAlignmentMode verticalAlignmentMode() const { return vertical_; }
  void setVerticalAlignmentMode(LabelVerticalAlignmentMode mode);

  // The scene cannot measure text, so a label's own frame is the empty
  // rectangle at its position; hit-test labels through a sprite behind them.

 private:
  std::string text_;
  std::string fontName_ = "Helvetica";
  double fontSize_ = 32;
  Color fontColor_ = Color::white();
  LabelHorizontalAlignmentMode horizontal_ = LabelHorizontalAlignmentMode::Center;
  LabelVerticalAlignmentMode vertical_ = LabelVerticalAlignmentMode::Baseline;
};

}  // namespace kit
