#include <gtest/gtest.h>

#include <cmath>

#include "kit/ui/animation_options.h"
#include "kit/ui/window.h"
#include "ui_fixture.h"

namespace kit {
namespace {

using Options = AnimationOptions;

class AnimationTest : public UiTest {
 protected:
  AnimationTest() { window->addSubview(toast); }

  // The toast's life: added at alpha 0, 0.2 s ease-out fade in, then a fade
  // out of 0.2 s ease-in after `stay` seconds, then removal. The closures
  // hold the view weakly, so only the animations keep it alive.
  void showToast(double stay) {
    View* view = toast.get();
    view->setAlpha(0);
    View::animateWithDuration(
        0.2, 0, Options::CurveEaseOut, [view] { view->setAlpha(1); },
        [this, view, stay](bool finished) {
          record("in")(finished);
          View::animateWithDuration(
              0.2, stay, Options::CurveEaseIn, [view] { view->setAlpha(0); },
              [this, view](bool finished) {
                record("out")(finished);
                view->removeFromSuperview();
              });
        });
  }

  std::shared_ptr<Window> window = std::make_shared<Window>(Size{320, 480});
  std::shared_ptr<View> toast = makeView({{10, 10}, {100, 40}});
};

TEST_F(AnimationTest, ToastFadesInEasingOutThenFadesOutAfterItsDelayAndIsRemoved) {
  showToast(3);
  EXPECT_EQ(toast->alpha(), 1);
  EXPECT_EQ(toast->presentationAlpha(), 0);

  advance(0.1);
  // Ease-out runs ahead of the clock: past half way at half time.
  EXPECT_GT(toast->presentationAlpha(), 0.6);
  EXPECT_LT(toast->presentationAlpha(), 0.9);
  EXPECT_TRUE(events.empty());

  advance(0.1);
  EXPECT_EQ(events, std::vector<std::string>{"in:finished"});
  // The fade out is already the model, but its delay shows the old value.
  EXPECT_EQ(toast->alpha(), 0);
  EXPECT_EQ(toast->presentationAlpha(), 1);

  advance(2.99);
  EXPECT_EQ(toast->presentationAlpha(), 1);
  advance(0.1);
  // Fading, and lagging a linear fade (which would be under 0.55 by now).
  EXPECT_LT(toast->presentationAlpha(), 1);
  EXPECT_GT(toast->presentationAlpha(), 0.55);
  EXPECT_NE(toast->superview(), nullptr);

  advance(0.15);
  EXPECT_EQ(events, (std::vector<std::string>{"in:finished", "out:finished"}));
  EXPECT_EQ(toast->superview(), nullptr);
  EXPECT_EQ(toast->presentationAlpha(), 0);
  EXPECT_FALSE(animator.isAnimating());
}

TEST_F(AnimationTest, RemovedViewStillFinishesItsAnimations) {
  std::weak_ptr<View> watch = toast;
  showToast(1);
  toast->removeFromSuperview();
  toast.reset();  // the test lets go too: only the animation holds it
  EXPECT_FALSE(watch.expired());

  advance(1.5);
  EXPECT_EQ(events, (std::vector<std::string>{"in:finished", "out:finished"}));
  EXPECT_TRUE(watch.expired());
}

TEST_F(AnimationTest, CompletionsRunInTheOrderTheAnimationsEnded) {
  auto other = makeView({});
  View::animateWithDuration(
      0.5, 0, Options::CurveLinear, [&] { other->setAlpha(0); }, record("late"));
  View::animateWithDuration(
      0.1, 0.2, Options::CurveLinear, [&] { toast->setAlpha(0.5); }, record("early"));
  View::animateWithDuration(
      0.3, [] {}, record("empty"));
  clock.advanceSeconds(2);  // one long frame covers all three
  tick();
  EXPECT_EQ(events,
            (std::vector<std::string>{"early:finished", "empty:finished", "late:finished"}));
}

TEST_F(AnimationTest, ReplacingStartsFromTheOldTargetUnlessBeginningFromCurrentState) {
  View::animateWithDuration(
      1, 0, Options::CurveLinear, [&] { toast->setAlpha(0); }, record("first"));
  advance(0.5);
  View::animateWithDuration(
      1, 0, Options::CurveLinear, [&] { toast->setAlpha(1); }, record("second"));
  EXPECT_EQ(toast->presentationAlpha(), 0);  // jumps to the first one's target
  tick();
  EXPECT_EQ(events, std::vector<std::string>{"first:interrupted"});

  advance(0.5);
  View::animateWithDuration(
      1, 0, Options::CurveLinear | Options::BeginFromCurrentState, [&] { toast->setAlpha(0); },
      record("third"));
  EXPECT_NEAR(toast->presentationAlpha(), 0.5, 1e-9);
  advance(0.5);
  EXPECT_NEAR(toast->presentationAlpha(), 0.25, 1e-9);
  advance(0.5);
  EXPECT_EQ(events, (std::vector<std::string>{"first:interrupted", "second:interrupted",
                                              "third:finished"}));
}

TEST_F(AnimationTest, GroupsEndWithTheirLastPropertyAndFramesAndColoursInterpolate) {
  View::animateWithDuration(
      1,
      [&] {
        toast->setAlpha(0);
        toast->setCenter({200, 200});
      },
      record("both"));
  advance(0.5);
  View::animateWithDuration(0.1, [&] { toast->setAlpha(1); });  // takes the alpha only
  advance(0.2);
  EXPECT_TRUE(events.empty());  // the frame is still moving
  advance(0.3);
  EXPECT_EQ(events, std::vector<std::string>{"both:interrupted"});

  events.clear();
  toast->setFrame({{10, 10}, {100, 40}});
  toast->setBackgroundColor(Color::black());
  View::animateWithDuration(
      1, 0, Options::CurveLinear,
      [&] {
        toast->setFrame({{110, 10}, {300, 40}});
        toast->setBackgroundColor(Color::white().withAlpha(0));
      },
      record("frame"));
  advance(0.5);
  EXPECT_EQ(toast->presentationFrame(), (Rect{{60, 10}, {200, 40}}));
  EXPECT_EQ(toast->presentationBackgroundColor(), (Color{0.5, 0.5, 0.5, 0.5}));
  EXPECT_EQ(toast->frame(), (Rect{{110, 10}, {300, 40}}));
  // Setting outside a block stops the animation; it reports at the next tick.
  toast->setFrame({{0, 0}, {10, 10}});
  toast->setBackgroundColor(Color::black());
  EXPECT_EQ(toast->presentationFrame(), toast->frame());
  EXPECT_FALSE(toast->hasAnimations());
  tick();
  EXPECT_EQ(events, std::vector<std::string>{"frame:interrupted"});
}

TEST_F(AnimationTest, ZeroDurationAppliesAtOnceAndCompletesAtTheNextTick) {
  View::animateWithDuration(
      0, [&] { toast->setAlpha(0.25); }, record("now"));
  EXPECT_EQ(toast->presentationAlpha(), 0.25);
  EXPECT_TRUE(events.empty());  // never inside the caller
  tick();
  EXPECT_EQ(events, std::vector<std::string>{"now:finished"});

  View::animateWithDuration(
      -1, std::nan(""), Options::None, [&] { toast->setAlpha(1); }, record("bad times"));
  tick();
  EXPECT_EQ(events.back(), "bad times:finished");
}

TEST_F(AnimationTest, CompletionsCanStartAndStopOtherAnimations) {
  auto other = makeView({});
  View::animateWithDuration(
      1, [&] { other->setAlpha(0); }, record("other"));
  View::animateWithDuration(
      0.5, [&] { toast->setAlpha(0); },
      [&](bool) {
        other->setAlpha(1);  // stops "other": it reports at the next tick
        View::animateWithDuration(
            0.5, [&] { toast->setAlpha(1); }, record("chained"));
      });
  advance(0.5);
  EXPECT_TRUE(events.empty());
  advance(1.0 / 60);
  EXPECT_EQ(events, std::vector<std::string>{"other:interrupted"});
  advance(0.5);
  EXPECT_EQ(events.back(), "chained:finished");
}

}  // namespace
}  // namespace kit
