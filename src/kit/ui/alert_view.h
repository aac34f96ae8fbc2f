#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/ui/key_receiver.h"
#include "kit/ui/view.h"

namespace kit {

class AlertView;

// What an alert tells its delegate; every operation is optional (empty).
// A tap on a button sends clicked, then willDismiss; didDismiss follows once
// the alert has left the screen. dismissWithClickedButtonIndex sends only the
// last two.
class AlertViewDelegate {
 public:
  virtual ~AlertViewDelegate() = default;
  virtual void alertViewClickedButtonAtIndex(AlertView& /*alertView*/, int /*buttonIndex*/) {}
  virtual void alertViewWillDismissWithButtonIndex(AlertView& /*alertView*/, int /*buttonIndex*/) {}
  virtual void alertViewDidDismissWithButtonIndex(AlertView& /*alertView*/, int /*buttonIndex*/) {}
};

// A modal alert drawn in the window: a dimming view over everything with a
// rounded panel holding the title, the message and the buttons (side by side
// when two fit, stacked otherwise, the cancel button last). Button indices:
// the cancel button is 0 when there is one, the other buttons follow in the
// order given. While it is up it swallows every tap outside its buttons and
// takes the keyboard: Escape cancels, Return presses the highlighted button
// (at first the cancel button, else the last other one), arrows and Tab move the
// highlight. Create with std::make_shared; while shown the window holds it.
// The delegate is weak. Main thread only.
class AlertView final : public View, public KeyReceiver {
 public:
  AlertView(std::string title, std::string message, std::weak_ptr<AlertViewDelegate> delegate,
            std::optional<std::string> cancelButtonTitle,
            std::vector<std::string> otherButtonTitles);
  std::string className() const override { return "AlertView"; }

  const std::string& title() const { return title_; }
  const std::string& message() const { return message_; }
  std::shared_ptr<AlertViewDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<AlertViewDelegate> delegate) { delegate_ = std::move(delegate); }

  int numberOfButtons() const { return static_cast<int>(buttonTitles_.size()); }
  // Empty for an index that names no button.
  std::string buttonTitleAtIndex(int buttonIndex) const;
  // -1 when the alert has no cancel button.
  int cancelButtonIndex() const { return hasCancel_ ? 0 : -1; }
  int highlightedButtonIndex() const { return highlighted_; }

  // Shows the alert over the window of `view`, fading in. A view not in a
  // window yet (its controller is still loading it) gets the alert at the
  // next frame, over the window it is in by then (or the top of its tree).
  // Ignored when already shown or `view` is null.
  void show(const std::shared_ptr<View>& view);
  bool isVisible() const { return shown_ && !dismissing_; }
  // Fades the alert out and removes it, telling the delegate (will, then did
  // once it is gone). Ignored unless visible.
  void dismissWithClickedButtonIndex(int buttonIndex, bool animated);

  // Input while shown, in this view's coordinates: a touch on a button
  // presses it; anything else is swallowed.
  void touchesBegan(const std::vector<Point>& pointsInView);
  bool keyPressed(Key key) override;

  // The button's frame in this view's coordinates, once shown.
  std::optional<Rect> frameOfButtonAtIndex(int buttonIndex) const;

  // The topmost visible alert among the subviews of `window`, or nullptr.
  static std::shared_ptr<AlertView> visibleAlert(const View& window);

 protected:
  std::string describe() const override;

 private:
  struct Button {
    int index = 0;
    std::shared_ptr<View> view;
    // The highlight's pieces, shown while the button is highlighted.
    std::vector<std::shared_ptr<View>> highlight;
  };

  void attach(const std::shared_ptr<View>& host);
  void layout(Size hostSize);
  void addButton(int index, Rect frame, bool bold);
  void setHighlighted(int buttonIndex);
  void moveHighlight(int step);
  void click(int buttonIndex);

  std::string title_;
  std::string message_;
  std::weak_ptr<AlertViewDelegate> delegate_;
  std::vector<std::string> buttonTitles_;
  bool hasCancel_ = false;
  std::shared_ptr<View> panel_;
  std::vector<Button> buttons_;  // in the order the highlight moves through
  int highlighted_ = -1;
  bool shown_ = false;
  bool waiting_ = false;  // for the view to join its window
  bool dismissing_ = false;
};

}  // namespace kit
