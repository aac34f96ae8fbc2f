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

TEST_F(AnimationTest, ModelChangesAtOnceWhilePresentationEasesOut) {
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
}

TEST_F(AnimationTest, DelayedFadeOutEndsWithRemovalAboutStayPlusFourTenthsLater) {
  showToast(3);
  advance(3.19);
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

TEST_F(AnimationTest, ReplacingWithoutCurrentStateStartsFromTheOldModelValue) {
  View::animateWithDuration(
      1, 0, Options::CurveLinear, [&] { toast->setAlpha(0); }, record("first"));
  advance(0.5);
  EXPECT_NEAR(toast->presentationAlpha(), 0.5, 1e-9);

  View::animateWithDuration(
      1, 0, Options::CurveLinear, [&] { toast->setAlpha(1); }, record("second"));
  EXPECT_EQ(toast->presentationAlpha(), 0);  // jumps to the first one's target
  tick();
  EXPECT_EQ(events, std::vector<std::string>{"first:interrupted"});
  advance(0.5);
  EXPECT_NEAR(toast->presentationAlpha(), 0.5, 1e-9);
  advance(0.5);
  EXPECT_EQ(events, (std::vector<std::string>{"first:interrupted", "second:finished"}));
}

TEST_F(AnimationTest, BeginFromCurrentStateContinuesFromWhatIsShown) {
  View::animateWithDuration(
      1, 0, Options::CurveLinear, [&] { toast->setAlpha(0); }, record("first"));
  advance(0.25);
  View::animateWithDuration(
      1, 0, Options::CurveLinear | Options::BeginFromCurrentState, [&] { toast->setAlpha(0); },
      record("second"));
  EXPECT_NEAR(toast->presentationAlpha(), 0.75, 1e-9);
  advance(0.5);
  EXPECT_NEAR(toast->presentationAlpha(), 0.375, 1e-9);
  advance(0.5);
  EXPECT_EQ(events, (std::vector<std::string>{"first:interrupted", "second:finished"}));
}

TEST_F(AnimationTest, GroupFinishesOnlyWhenAllItsPropertiesAreDone) {
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
}

TEST_F(AnimationTest, FrameCenterAndColourInterpolate) {
  toast->setBackgroundColor(Color::black());
  View::animateWithDuration(1, 0, Options::CurveLinear,
                            [&] {
                              toast->setFrame({{110, 10}, {300, 40}});
                              toast->setBackgroundColor(Color::white().withAlpha(0));
                            },
                            {});
  advance(0.5);
  EXPECT_EQ(toast->presentationFrame(), (Rect{{60, 10}, {200, 40}}));
  EXPECT_EQ(toast->presentationBackgroundColor(), (Color{0.5, 0.5, 0.5, 0.5}));
  EXPECT_EQ(toast->frame(), (Rect{{110, 10}, {300, 40}}));
}

TEST_F(AnimationTest, SettingOutsideABlockStopsTheAnimation) {
  View::animateWithDuration(
      1, [&] { toast->setAlpha(0); }, record("fade"));
  advance(0.5);
  toast->setAlpha(0.3);
  EXPECT_EQ(toast->presentationAlpha(), 0.3);
  EXPECT_FALSE(toast->hasAnimations());
  tick();
  EXPECT_EQ(events, std::vector<std::string>{"fade:interrupted"});

  View::animateWithDuration(
      1,
      [&] {
        toast->setCenter({0, 0});
      },
      record("move"));
  toast->removeAllAnimations();
  tick();
  EXPECT_EQ(events.back(), "move:interrupted");
  EXPECT_EQ(toast->presentationFrame(), toast->frame());
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

TEST_F(AnimationTest, SettingTwiceInOneBlockRetargets) {
  View::animateWithDuration(
      1, 0, Options::CurveLinear,
      [&] {
        toast->setAlpha(0.5);
        toast->setAlpha(0);
      },
      record("once"));
  advance(0.5);
  EXPECT_NEAR(toast->presentationAlpha(), 0.5, 1e-9);
  advance(0.5);
  EXPECT_EQ(events, std::vector<std::string>{"once:finished"});
}

TEST_F(AnimationTest, AutoresizedSubviewsAnimateWithTheirSuperview) {
  auto child = makeView({{0, 0}, {100, 40}});
  child->setAutoresizingMask(Autoresizing::FlexibleWidth);
  toast->addSubview(child);
  View::animateWithDuration(1, 0, Options::CurveLinear,
                            [&] {
                              toast->setFrame({{10, 10}, {200, 40}});
                            },
                            {});
  advance(0.5);
  EXPECT_EQ(child->frame().size.width, 200);
  EXPECT_EQ(child->presentationFrame().size.width, 150);
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

TEST_F(AnimationTest, WithoutAnAnimatorChangesAndCompletionsAreImmediate) {
  Animator::setCurrent(nullptr);
  bool done = false;
  View::animateWithDuration(
      1, [&] { toast->setAlpha(0); }, [&](bool finished) { done = finished; });
  EXPECT_TRUE(done);
  EXPECT_EQ(toast->presentationAlpha(), 0);
}

TEST_F(AnimationTest, DestroyingTheAnimatorDropsAnimationsQuietly) {
  auto own = std::make_unique<Animator>(clock);
  Animator::setCurrent(own.get());
  View::animateWithDuration(
      1, [&] { toast->setAlpha(0); }, record("dropped"));
  own.reset();
  EXPECT_EQ(Animator::current(), nullptr);
  EXPECT_EQ(toast->presentationAlpha(), 0);
  EXPECT_FALSE(toast->hasAnimations());
  EXPECT_TRUE(events.empty());
}

TEST(EasingCurves, CurvesMeetTheirEndsAndBendTheRightWay) {
  for (auto curve : {AnimationCurve::EaseIn, AnimationCurve::EaseOut, AnimationCurve::EaseInOut,
                     AnimationCurve::Linear}) {
    EXPECT_EQ(easedProgress(curve, 0), 0);
    EXPECT_EQ(easedProgress(curve, 1), 1);
    EXPECT_EQ(easedProgress(curve, -3), 0);
    EXPECT_EQ(easedProgress(curve, 7), 1);
    double previous = 0;
    for (int i = 1; i <= 100; ++i) {
      const double v = easedProgress(curve, i / 100.0);
      EXPECT_GE(v, previous);
      previous = v;
    }
  }
  EXPECT_LT(easedProgress(AnimationCurve::EaseIn, 0.5), 0.4);
  EXPECT_GT(easedProgress(AnimationCurve::EaseOut, 0.5), 0.6);
  EXPECT_NEAR(easedProgress(AnimationCurve::EaseInOut, 0.5), 0.5, 1e-9);
  EXPECT_EQ(curveOf(Options::CurveEaseOut | Options::BeginFromCurrentState),
            AnimationCurve::EaseOut);
  EXPECT_EQ(curveOf(Options::None), AnimationCurve::EaseInOut);
}

}  // namespace
}  // namespace kit
