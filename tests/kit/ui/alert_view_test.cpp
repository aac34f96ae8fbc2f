#include "kit/ui/alert_view.h"

#include <gmock/gmock.h>

#include "kit/ui/window.h"
#include "ui_fixture.h"

namespace kit {
namespace {

using ::testing::ElementsAre;

// Writes down what the alert said, in order.
class DelegateLog final : public AlertViewDelegate {
 public:
  void alertViewClickedButtonAtIndex(AlertView& alert, int index) override {
    calls.push_back("clicked " + std::to_string(index) + visible(alert));
  }
  void alertViewWillDismissWithButtonIndex(AlertView& alert, int index) override {
    calls.push_back("will " + std::to_string(index) + visible(alert));
  }
  void alertViewDidDismissWithButtonIndex(AlertView& alert, int index) override {
    calls.push_back("did " + std::to_string(index) + (alert.superview() ? " attached" : ""));
  }
  std::vector<std::string> calls;

 private:
  static std::string visible(const AlertView& alert) { return alert.isVisible() ? " up" : ""; }
};

class AlertViewTest : public UiTest {
 protected:
  AlertViewTest() { window->addSubview(game); }

  std::shared_ptr<AlertView> showAlert(std::optional<std::string> cancel,
                                       std::vector<std::string> others,
                                       std::string message = "Rate the game?") {
    auto alert = std::make_shared<AlertView>("Title", std::move(message), delegate,
                                             std::move(cancel), std::move(others));
    alert->show(game);
    advance(0.3);
    return alert;
  }

  void tapButton(AlertView& alert, int index) {
    const Rect frame = *alert.frameOfButtonAtIndex(index);
    alert.touchesBegan({{frame.midX(), frame.midY()}});
  }

  std::shared_ptr<Window> window = std::make_shared<Window>(Size{320, 568});
  std::shared_ptr<View> game = std::make_shared<View>(Rect{{0, 0}, {320, 568}});
  std::shared_ptr<DelegateLog> delegate = std::make_shared<DelegateLog>();
};

TEST_F(AlertViewTest, ShownAlertCoversTheWindowAndSwallowsTapsOutsideItsButtons) {
  auto alert = showAlert("Cancel", {"OK"});
  EXPECT_EQ(AlertView::visibleAlert(*window), alert);
  EXPECT_EQ(alert->frame(), window->bounds());
  // The game under it is not reached.
  EXPECT_TRUE(window->hitTest({5, 5})->isDescendantOfView(alert.get()));
  alert->touchesBegan({{5, 5}});
  advance(0.5);
  EXPECT_TRUE(alert->isVisible());
  EXPECT_TRUE(delegate->calls.empty());
}

TEST_F(AlertViewTest, TapOnAButtonTellsTheDelegateAndDismissesAfterTheFade) {
  auto alert = showAlert("Cancel", {"Yes", "No"});
  tapButton(*alert, 2);
  EXPECT_THAT(delegate->calls, ElementsAre("clicked 2 up", "will 2"));
  EXPECT_FALSE(AlertView::visibleAlert(*window));
  // A second tap while it fades changes nothing.
  tapButton(*alert, 1);
  advance(0.3);
  EXPECT_THAT(delegate->calls, ElementsAre("clicked 2 up", "will 2", "did 2"));
  EXPECT_FALSE(alert->superview());
}

TEST_F(AlertViewTest, TwoButtonsSitSideBySideAndThreeStackWithCancelLast) {
  auto pair = showAlert("Cancel", {"OK"});
  const Rect cancel = *pair->frameOfButtonAtIndex(0);
  const Rect ok = *pair->frameOfButtonAtIndex(1);
  EXPECT_EQ(cancel.minY(), ok.minY());
  EXPECT_LT(cancel.maxX(), ok.midX());
  pair->dismissWithClickedButtonIndex(0, false);

  auto stack = showAlert("Not now", {"Rate it now", "No, send feedback"});
  const Rect a = *stack->frameOfButtonAtIndex(1);
  const Rect b = *stack->frameOfButtonAtIndex(2);
  const Rect c = *stack->frameOfButtonAtIndex(0);
  EXPECT_EQ(a.minX(), c.minX());
  EXPECT_LT(a.maxY(), b.maxY());
  EXPECT_LT(b.maxY(), c.maxY());
}

// A player pressing Enter to start a game while the rating prompt comes up
// must not choose feedback (and be marked as rated for good) by accident.
TEST_F(AlertViewTest, StrayReturnPressesCancelUntilTheHighlightMoves) {
  auto first = showAlert("Cancel", {"Yes", "No"});
  EXPECT_TRUE(deliverKey(*window, Key::Escape));
  advance(0.3);
  auto second = showAlert("Cancel", {"Yes", "No"});
  EXPECT_EQ(second->highlightedButtonIndex(), 0);
  EXPECT_TRUE(deliverKey(*window, Key::Return));
  advance(0.3);
  auto third = showAlert(std::nullopt, {"Yes", "No"});
  EXPECT_EQ(third->highlightedButtonIndex(), 1);
  EXPECT_TRUE(deliverKey(*window, Key::Return));
  advance(0.3);
  EXPECT_THAT(delegate->calls, ElementsAre("clicked 0 up", "will 0", "did 0", "clicked 0 up",
                                           "will 0", "did 0", "clicked 1 up", "will 1", "did 1"));
  EXPECT_FALSE(deliverKey(*window, Key::Return));  // no alert: the game gets its keys
}

TEST_F(AlertViewTest, ArrowsAndTabMoveTheHighlightAndEscapeNeedsACancelButton) {
  auto alert = showAlert("Cancel", {"Yes", "No"});
  // Stacked: Yes, No, Cancel from the top; the highlight starts on Cancel.
  deliverKey(*window, Key::Down);
  EXPECT_EQ(alert->highlightedButtonIndex(), 1);
  deliverKey(*window, Key::Tab);
  EXPECT_EQ(alert->highlightedButtonIndex(), 2);
  deliverKey(*window, Key::BackTab);
  EXPECT_EQ(alert->highlightedButtonIndex(), 1);
  deliverKey(*window, Key::Down);
  EXPECT_TRUE(deliverKey(*window, Key::Left));
  deliverKey(*window, Key::Return);
  advance(0.3);
  EXPECT_THAT(delegate->calls, ElementsAre("clicked 1 up", "will 1", "did 1"));

  auto noCancel = showAlert(std::nullopt, {"OK"});
  EXPECT_TRUE(deliverKey(*window, Key::Escape));  // swallowed
  advance(0.3);
  EXPECT_TRUE(noCancel->isVisible());
}

TEST_F(AlertViewTest, AlertShownWhileAViewLoadsGoesOverItsWindowAtTheNextFrame) {
  // As a controller does in viewDidLoad, before the window holds its view.
  auto loading = std::make_shared<View>(Rect{{0, 0}, {100, 100}});
  auto alert = std::make_shared<AlertView>("T", "M", delegate, "OK", std::vector<std::string>{});
  alert->show(loading);
  alert->show(loading);  // once only
  EXPECT_FALSE(alert->superview());
  game->addSubview(loading);
  advance(0.3);
  EXPECT_EQ(alert->superview(), window);
  EXPECT_EQ(alert->frame(), window->bounds());
  EXPECT_EQ(window->subviews().size(), 2u);
}

}  // namespace
}  // namespace kit
