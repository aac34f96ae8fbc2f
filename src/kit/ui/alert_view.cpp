#include "kit/ui/alert_view.h"

#include <algorithm>

#include "kit/ui/label.h"
#include "kit/ui/text_layout.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

constexpr double kPanelWidth = 270;
constexpr double kScreenInset = 20;  // least room between the panel and the window's edges
constexpr double kTextInset = 16;
constexpr double kTopInset = 20;
constexpr double kTextGap = 6;
constexpr double kBottomInset = 20;
constexpr double kButtonHeight = 44;
constexpr double kButtonPadding = 8;  // a side-by-side title keeps this far from its edges
constexpr double kSeparator = 0.5;
constexpr double kCornerRadius = 12;
constexpr double kFadeSeconds = 0.2;

constexpr Color kDimming{0, 0, 0, 0.4};
constexpr Color kPanel{0.97, 0.97, 0.97, 1};
constexpr Color kSeparatorColor{0.78, 0.78, 0.8, 1};
constexpr Color kButtonText{0.0, 0.48, 1.0, 1};
constexpr Color kHighlight{0.86, 0.86, 0.88, 1};

const Font kTitleFont = Font::boldSystemFontOfSize(17);
const Font kMessageFont = Font::systemFontOfSize(14);
// A message without a title stands in its place, a little larger.
const Font kLoneMessageFont = Font::systemFontOfSize(16);
const Font kButtonFont = Font::systemFontOfSize(17);
const Font kCancelFont = Font::boldSystemFontOfSize(17);

std::shared_ptr<Label> makeTextLabel(const std::string& text, const Font& font, Rect frame) {
  auto label = std::make_shared<Label>(frame);
  label->setText(text);
  label->setFont(font);
  label->setTextAlignment(TextAlignment::Center);
  label->setNumberOfLines(0);
  label->setLineBreakMode(LineBreakMode::TruncateTail);
  return label;
}

std::shared_ptr<View> makeLine(Rect frame) {
  auto line = std::make_shared<View>(frame);
  line->setBackgroundColor(kSeparatorColor);
  line->setUserInteractionEnabled(false);
  return line;
}

// The highlight of a button of `size`, as views to lay under its title: its
// rectangle, rounded like the panel at the panel's bottom corners it meets.
// The panel clips its subviews to its rectangle only, so the rounding is
// the highlight's own: a rounded piece, with square pieces over the corners
// that stay square.
std::vector<std::shared_ptr<View>> highlightPieces(Size size, bool roundLeft, bool roundRight) {
  const double w = size.width, h = size.height;
  const double r = std::min(kCornerRadius, std::min(w, h) / 2);
  std::vector<Rect> square;
  if (!roundLeft && !roundRight)
    square.push_back({{0, 0}, size});
  else
    square.push_back({{0, 0}, {w, h - r}});
  if (roundLeft != roundRight)
    square.push_back(roundLeft ? Rect{{r, 0}, {w - r, h}} : Rect{{0, 0}, {w - r, h}});
  std::vector<std::shared_ptr<View>> pieces;
  const auto add = [&pieces](Rect frame, double radius) {
    auto piece = std::make_shared<View>(frame);
    piece->setBackgroundColor(kHighlight);
    piece->setCornerRadius(radius);
    piece->setUserInteractionEnabled(false);
    piece->setHidden(true);
    pieces.push_back(std::move(piece));
  };
  if (roundLeft || roundRight)
    add({{0, 0}, size}, r);
  for (const Rect& frame : square)
    add(frame, 0);
  return pieces;
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\')
      out += '\\';
    out += c;
  }
  return out + "\"";
}

}  // namespace

AlertView::AlertView(std::string title, std::string message,
                     std::weak_ptr<AlertViewDelegate> delegate,
                     std::optional<std::string> cancelButtonTitle,
                     std::vector<std::string> otherButtonTitles)
    : title_(std::move(title)), message_(std::move(message)), delegate_(std::move(delegate)) {
  if (cancelButtonTitle) {
    hasCancel_ = true;
    buttonTitles_.push_back(std::move(*cancelButtonTitle));
  }
  for (std::string& other : otherButtonTitles)
    buttonTitles_.push_back(std::move(other));
}

std::string AlertView::buttonTitleAtIndex(int buttonIndex) const {
  if (buttonIndex < 0 || buttonIndex >= numberOfButtons())
    return {};
  return buttonTitles_[static_cast<size_t>(buttonIndex)];
}

void AlertView::show(const std::shared_ptr<View>& view) {
  if (shown_ || waiting_ || !view)
    return;
  if (view->window()) {
    attach(view->window());
    return;
  }
  // A controller still loading its view is not in its window yet: the alert
  // goes up at the next frame, over the window the view is in by then.
  waiting_ = true;
  auto self = std::static_pointer_cast<AlertView>(shared_from_this());
  std::weak_ptr<View> over = view;
  View::animateWithDuration(
      0, [] {},
      [self, over](bool) {
        self->waiting_ = false;
        auto view = over.lock();
        if (!view || self->shown_)
          return;
        std::shared_ptr<View> host = view->window();
        if (!host) {
          host = view;
          while (auto parent = host->superview())
            host = parent;
        }
        self->attach(host);
      });
}

void AlertView::attach(const std::shared_ptr<View>& host) {
  shown_ = true;
  setFrame(host->bounds());
  setAutoresizingMask(Autoresizing::FlexibleWidth | Autoresizing::FlexibleHeight);
  setBackgroundColor(kDimming);
  layout(host->bounds().size);
  // Return answers the cancel button until the player moves the highlight: the
  // same key presses Play, and a stray press must not make a lasting choice.
  setHighlighted(hasCancel_ ? cancelButtonIndex() : numberOfButtons() - 1);
  setAlpha(0);
  host->addSubview(shared_from_this());
  View::animateWithDuration(kFadeSeconds, [this] { setAlpha(1); });
}

void AlertView::layout(Size hostSize) {
  const double panelWidth = std::max(0.0, std::min(kPanelWidth, hostSize.width - 2 * kScreenInset));
  const double textWidth = std::max(0.0, panelWidth - 2 * kTextInset);
  const Size unbounded{textWidth, TextBlock::kUnbounded};

  const int count = numberOfButtons();
  bool sideBySide = count == 2;
  for (int i = 0; sideBySide && i < count; ++i) {
    const Font& font = i == cancelButtonIndex() ? kCancelFont : kButtonFont;
    TextBlock one;
    one.text = buttonTitles_[static_cast<size_t>(i)];
    one.font = font;
    sideBySide = TextLayout(std::move(one)).size().width <= panelWidth / 2 - 2 * kButtonPadding;
  }
  const double buttonsHeight = count == 0 ? 0 : sideBySide ? kButtonHeight : count * kButtonHeight;

  const Font& messageFont = title_.empty() ? kLoneMessageFont : kMessageFont;
  const Size titleSize = title_.empty()
                             ? Size{}
                             : sizeWithFont(title_, kTitleFont, unbounded, LineBreakMode::WordWrap);
  const double gap = !title_.empty() && !message_.empty() ? kTextGap : 0;
  // A message too long for the window keeps the lines that fit.
  const double roomForMessage =
      std::max(0.0, hostSize.height - 2 * kScreenInset - buttonsHeight - kTopInset - kBottomInset -
                        titleSize.height - gap);
  const Size messageSize =
      message_.empty()
          ? Size{}
          : sizeWithFont(message_, messageFont, {textWidth, std::max(roomForMessage, 1.0)},
                         LineBreakMode::WordWrap);

  const double textHeight = kTopInset + titleSize.height + gap + messageSize.height + kBottomInset;
  const double panelHeight = textHeight + buttonsHeight;

  panel_ = std::make_shared<View>(
      Rect{{(hostSize.width - panelWidth) / 2, (hostSize.height - panelHeight) / 2},
           {panelWidth, panelHeight}});
  panel_->setBackgroundColor(kPanel);
  panel_->setCornerRadius(kCornerRadius);
  panel_->setClipsToBounds(true);
  panel_->setAutoresizingMask(Autoresizing::FlexibleLeftMargin | Autoresizing::FlexibleRightMargin |
                              Autoresizing::FlexibleTopMargin | Autoresizing::FlexibleBottomMargin);
  addSubview(panel_);

  double y = kTopInset;
  if (!title_.empty()) {
    panel_->addSubview(
        makeTextLabel(title_, kTitleFont, {{kTextInset, y}, {textWidth, titleSize.height}}));
    y += titleSize.height + gap;
  }
  if (!message_.empty()) {
    panel_->addSubview(
        makeTextLabel(message_, messageFont, {{kTextInset, y}, {textWidth, messageSize.height}}));
  }

  buttons_.clear();
  if (count == 0)
    return;
  panel_->addSubview(makeLine({{0, textHeight - kSeparator}, {panelWidth, kSeparator}}));
  if (sideBySide) {
    // Index 0 (the cancel button, if any) on the left.
    const double half = panelWidth / 2;
    addButton(0, {{0, textHeight}, {half, kButtonHeight}}, hasCancel_);
    addButton(1, {{half, textHeight}, {panelWidth - half, kButtonHeight}}, false);
    panel_->addSubview(
        makeLine({{half - kSeparator / 2, textHeight}, {kSeparator, kButtonHeight}}));
    return;
  }
  // Stacked: the other buttons in order, the cancel button at the bottom.
  double by = textHeight;
  for (int i = hasCancel_ ? 1 : 0; i < count; ++i) {
    addButton(i, {{0, by}, {panelWidth, kButtonHeight}}, false);
    by += kButtonHeight;
    panel_->addSubview(makeLine({{0, by - kSeparator}, {panelWidth, kSeparator}}));
  }
  if (hasCancel_)
    addButton(0, {{0, by}, {panelWidth, kButtonHeight}}, true);
}

void AlertView::addButton(int index, Rect frame, bool bold) {
  auto button = std::make_shared<View>(frame);
  button->setTag(index);
  auto label = std::make_shared<Label>(
      Rect{{kButtonPadding, 0}, {frame.size.width - 2 * kButtonPadding, frame.size.height}});
  label->setText(buttonTitles_[static_cast<size_t>(index)]);
  label->setFont(bold ? kCancelFont : kButtonFont);
  label->setTextColor(kButtonText);
  label->setTextAlignment(TextAlignment::Center);
  const Size panel = panel_->bounds().size;
  const bool atBottom = frame.maxY() >= panel.height - 0.5;
  std::vector<std::shared_ptr<View>> highlight = highlightPieces(
      frame.size, atBottom && frame.minX() <= 0.5, atBottom && frame.maxX() >= panel.width - 0.5);
  for (const auto& piece : highlight)
    button->addSubview(piece);
  button->addSubview(label);
  panel_->insertSubview(button, 0);  // under the separators
  buttons_.push_back({index, std::move(button), std::move(highlight)});
}

void AlertView::setHighlighted(int buttonIndex) {
  highlighted_ = buttonIndex;
  for (const Button& b : buttons_) {
    for (const auto& piece : b.highlight)
      piece->setHidden(b.index != buttonIndex);
  }
}

void AlertView::moveHighlight(int step) {
  if (buttons_.empty())
    return;
  const int n = static_cast<int>(buttons_.size());
  int at = 0;
  for (int i = 0; i < n; ++i) {
    if (buttons_[static_cast<size_t>(i)].index == highlighted_)
      at = i;
  }
  setHighlighted(buttons_[static_cast<size_t>(((at + step) % n + n) % n)].index);
}

void AlertView::click(int buttonIndex) {
  // Held: the delegate may let go of the alert while it is told.
  auto self = std::static_pointer_cast<AlertView>(shared_from_this());
  if (auto d = delegate())
    d->alertViewClickedButtonAtIndex(*this, buttonIndex);
  dismissWithClickedButtonIndex(buttonIndex, true);
}

void AlertView::dismissWithClickedButtonIndex(int buttonIndex, bool animated) {
  if (!isVisible())
    return;
  dismissing_ = true;
  auto self = std::static_pointer_cast<AlertView>(shared_from_this());
  if (auto d = delegate())
    d->alertViewWillDismissWithButtonIndex(*this, buttonIndex);
  View::animateWithDuration(
      animated ? kFadeSeconds : 0, 0, AnimationOptions::BeginFromCurrentState,
      [this] { setAlpha(0); },
      [self, buttonIndex](bool) {
        self->removeFromSuperview();
        self->shown_ = false;
        if (auto d = self->delegate())
          d->alertViewDidDismissWithButtonIndex(*self, buttonIndex);
      });
}

void AlertView::touchesBegan(const std::vector<Point>& pointsInView) {
  if (!isVisible())
    return;
  for (Point p : pointsInView) {
    for (const Button& b : buttons_) {
      if (b.view->convertRectToView(b.view->bounds(), this).contains(p)) {
        click(b.index);
        return;
      }
    }
  }
}

bool AlertView::keyPressed(Key key) {
  if (!isVisible())
    return false;
  switch (key) {
    case Key::Escape:
      if (hasCancel_)
        click(cancelButtonIndex());
      break;
    case Key::Return:
      if (highlighted_ >= 0)
        click(highlighted_);
      break;
    case Key::Tab:
    case Key::Right:
    case Key::Down:
      moveHighlight(1);
      break;
    case Key::BackTab:
    case Key::Left:
    case Key::Up:
      moveHighlight(-1);
      break;
  }
  return true;
}

std::optional<Rect> AlertView::frameOfButtonAtIndex(int buttonIndex) const {
  for (const Button& b : buttons_) {
    if (b.index == buttonIndex)
      return b.view->convertRectToView(b.view->bounds(), this);
  }
  return std::nullopt;
}

std::shared_ptr<AlertView> AlertView::visibleAlert(const View& window) {
  const auto& subviews = window.subviews();
  for (auto it = subviews.rbegin(); it != subviews.rend(); ++it) {
    auto alert = std::dynamic_pointer_cast<AlertView>(*it);
    if (alert && alert->isVisible())
      return alert;
  }
  return nullptr;
}

std::string AlertView::describe() const {
  std::string out = "title=" + quoted(title_) + " message=" + quoted(message_) + " buttons=[";
  for (size_t i = 0; i < buttonTitles_.size(); ++i) {
    if (i)
      out += ',';
    out += quoted(buttonTitles_[i]);
  }
  return out + "] tag=" + std::to_string(tag());
}

}  // namespace kit
