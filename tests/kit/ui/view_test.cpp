#include "kit/ui/view.h"

#include <gtest/gtest.h>

#include <cmath>

#include "kit/ui/activity_indicator_view.h"
#include "kit/ui/image_view.h"
#include "kit/ui/label.h"
#include "kit/ui/window.h"
#include "ui_fixture.h"

namespace kit {
namespace {

using ViewTest = UiTest;

TEST_F(ViewTest, BoundsAndCenterFollowTheFrame) {
  auto v = makeView({{10, 20}, {100, 50}});
  EXPECT_EQ(v->bounds(), (Rect{{0, 0}, {100, 50}}));
  EXPECT_EQ(v->center(), (Point{60, 45}));

  v->setCenter({100, 100});
  EXPECT_EQ(v->frame(), (Rect{{50, 75}, {100, 50}}));

  v->setBounds({{0, 0}, {40, 10}});  // resizes about the center
  EXPECT_EQ(v->frame(), (Rect{{80, 95}, {40, 10}}));

  v->setFrame({{std::nan(""), 1}, {INFINITY, 2}});
  EXPECT_EQ(v->frame(), (Rect{{0, 1}, {0, 2}}));
  v->setAlpha(std::nan(""));
  EXPECT_EQ(v->alpha(), 0);
  v->setAlpha(3);
  EXPECT_EQ(v->alpha(), 1);
}

TEST_F(ViewTest, SubviewsKeepDrawingOrderAndMoveBetweenParents) {
  auto parent = makeView({{0, 0}, {100, 100}});
  auto a = makeView({}), b = makeView({}), c = makeView({});
  parent->addSubview(a);
  parent->addSubview(b);
  parent->insertSubview(c, 0);
  EXPECT_EQ(parent->subviews(), (std::vector<std::shared_ptr<View>>{c, a, b}));

  parent->addSubview(c);  // already there: moves to the top
  EXPECT_EQ(parent->subviews(), (std::vector<std::shared_ptr<View>>{a, b, c}));
  parent->bringSubviewToFront(a);
  parent->sendSubviewToBack(b);
  EXPECT_EQ(parent->subviews(), (std::vector<std::shared_ptr<View>>{b, c, a}));
  parent->insertSubview(makeView({}), 99);  // clamped to the end
  EXPECT_EQ(parent->subviews().size(), 4u);

  auto other = makeView({});
  other->addSubview(a);
  EXPECT_EQ(a->superview(), other);
  EXPECT_EQ(parent->subviews().size(), 3u);

  a->removeFromSuperview();
  EXPECT_EQ(a->superview(), nullptr);
  EXPECT_TRUE(other->subviews().empty());
}

TEST_F(ViewTest, AddingAnAncestorOrItselfIsIgnored) {
  auto top = makeView({}), middle = makeView({}), leaf = makeView({});
  top->addSubview(middle);
  middle->addSubview(leaf);
  leaf->addSubview(top);
  leaf->addSubview(leaf);
  middle->addSubview(nullptr);
  EXPECT_TRUE(leaf->subviews().empty());
  EXPECT_EQ(top->superview(), nullptr);
  EXPECT_TRUE(leaf->isDescendantOfView(top.get()));
  EXPECT_FALSE(top->isDescendantOfView(leaf.get()));
}

TEST_F(ViewTest, WindowIsFoundFromAnyDescendant) {
  auto window = std::make_shared<Window>(Size{320, 568});
  auto v = makeView({}), child = makeView({});
  v->addSubview(child);
  EXPECT_EQ(child->window(), nullptr);
  window->addSubview(v);
  EXPECT_EQ(child->window(), window);
  EXPECT_EQ(window->window(), window);
}

// [Autoresizing]

TEST_F(ViewTest, FlexibleMarginsKeepAViewProportionallyPlaced) {
  auto host = makeView({{0, 0}, {300, 200}});
  auto panel = makeView({{50, 100}, {100, 40}});  // margins 50 | 150 and 100 | 60
  panel->setAutoresizingMask(45);
  host->addSubview(panel);

  host->setFrame({{0, 0}, {500, 400}});  // +200 each way
  EXPECT_EQ(panel->frame(), (Rect{{100, 225}, {100, 40}}));
}

TEST_F(ViewTest, FlexibleSizeAndFixedMarginsStretch) {
  auto host = makeView({{0, 0}, {300, 200}});
  auto fill = makeView({{10, 10}, {280, 180}});
  fill->setAutoresizingMask(Autoresizing::FlexibleWidth | Autoresizing::FlexibleHeight);
  auto pinnedRight = makeView({{250, 0}, {40, 20}});
  pinnedRight->setAutoresizingMask(Autoresizing::FlexibleLeftMargin);
  auto fixed = makeView({{5, 5}, {10, 10}});
  host->addSubview(fill);
  host->addSubview(pinnedRight);
  host->addSubview(fixed);

  host->setBounds({{0, 0}, {400, 100}});
  EXPECT_EQ(fill->frame(), (Rect{{10, 10}, {380, 80}}));
  EXPECT_EQ(pinnedRight->frame(), (Rect{{350, 0}, {40, 20}}));
  EXPECT_EQ(fixed->frame(), (Rect{{5, 5}, {10, 10}}));

  host->setFrame({{0, 0}, {0, 0}});  // never shrinks below zero
  EXPECT_EQ(fill->frame().size, (Size{0, 0}));
}

TEST_F(ViewTest, AutoresizingReachesGrandchildrenAndCanBeSwitchedOff) {
  auto host = makeView({{0, 0}, {100, 100}});
  auto middle = makeView({{0, 0}, {100, 100}});
  auto leaf = makeView({{0, 0}, {100, 100}});
  middle->setAutoresizingMask(Autoresizing::FlexibleWidth);
  leaf->setAutoresizingMask(Autoresizing::FlexibleWidth);
  host->addSubview(middle);
  middle->addSubview(leaf);

  host->setFrame({{0, 0}, {200, 100}});
  EXPECT_EQ(leaf->frame().size.width, 200);

  middle->setAutoresizesSubviews(false);
  host->setFrame({{0, 0}, {300, 100}});
  EXPECT_EQ(middle->frame().size.width, 300);
  EXPECT_EQ(leaf->frame().size.width, 200);
}

// [Hit testing and coordinates]

class HitTest : public ViewTest {
 protected:
  HitTest() {
    window->addSubview(panel);
    panel->addSubview(button);
  }
  std::shared_ptr<Window> window = std::make_shared<Window>(Size{320, 480});
  std::shared_ptr<View> panel = makeView({{20, 40}, {200, 100}});
  std::shared_ptr<View> button = makeView({{10, 10}, {50, 30}});
};

TEST_F(HitTest, DeepestViewUnderThePointWins) {
  EXPECT_EQ(window->hitTest({35, 55}), button);
  EXPECT_EQ(window->hitTest({100, 100}), panel);
  EXPECT_EQ(window->hitTest({5, 5}), window);
  EXPECT_EQ(window->hitTest({320, 10}), nullptr);  // right edge is outside
  EXPECT_EQ(window->hitTest({20, 40}), panel);     // top-left edge is inside
}

TEST_F(HitTest, TopmostSiblingWins) {
  auto cover = makeView({{0, 0}, {200, 100}});
  panel->addSubview(cover);
  EXPECT_EQ(window->hitTest({35, 55}), cover);
}

TEST_F(HitTest, HiddenTransparentAndNonInteractiveViewsAreSkippedWithTheirSubviews) {
  panel->setHidden(true);
  EXPECT_EQ(window->hitTest({35, 55}), window);
  panel->setHidden(false);

  panel->setAlpha(0.009);
  EXPECT_EQ(window->hitTest({35, 55}), window);
  panel->setAlpha(0.01);
  EXPECT_EQ(window->hitTest({35, 55}), button);

  button->setUserInteractionEnabled(false);
  EXPECT_EQ(window->hitTest({35, 55}), panel);
  panel->setUserInteractionEnabled(false);
  button->setUserInteractionEnabled(true);
  EXPECT_EQ(window->hitTest({35, 55}), window);
}

TEST_F(HitTest, SubviewsOutsideTheirParentAreNotReached) {
  button->setFrame({{190, 90}, {50, 50}});  // pokes out of the panel
  EXPECT_EQ(window->hitTest({215, 135}), button);
  EXPECT_EQ(window->hitTest({235, 135}), window);
}

TEST_F(HitTest, LabelsImagesAndSpinnersLetTouchesThrough) {
  panel->addSubview(std::make_shared<Label>(Rect{{0, 0}, {200, 100}}));
  panel->addSubview(std::make_shared<ImageView>(nullptr, Rect{{0, 0}, {200, 100}}));
  auto spinner = std::make_shared<ActivityIndicatorView>();
  spinner->startAnimating();
  panel->addSubview(spinner);
  EXPECT_EQ(window->hitTest({25, 45}), panel);
}

TEST_F(HitTest, PointsConvertBetweenViewsOfOneTree) {
  EXPECT_EQ(button->convertPointToView({0, 0}, nullptr), (Point{30, 50}));
  EXPECT_EQ(button->convertPointToView({5, 5}, panel.get()), (Point{15, 15}));
  EXPECT_EQ(button->convertPointFromView({30, 50}, window.get()), (Point{0, 0}));
  EXPECT_EQ(panel->convertPointFromView({0, 0}, button.get()), (Point{10, 10}));

  panel->setBounds({{0, 25}, {200, 100}});  // content scrolled up by 25
  EXPECT_EQ(button->convertPointToView({0, 0}, nullptr), (Point{30, 25}));
  EXPECT_EQ(window->hitTest({35, 45}), button);
  EXPECT_EQ(window->hitTest({35, 30}), window);  // the button shows above the panel's edge
  EXPECT_EQ(button->convertRectToView({{1, 2}, {3, 4}}, window.get()), (Rect{{31, 27}, {3, 4}}));
}

// [Associated objects]

TEST_F(ViewTest, AssociatedObjectsAreKeyedByAddressAndOwnedByTheView) {
  static const char kKey[] = "Key";
  static const char kOtherKey[] = "Key";  // same text, another key
  auto host = makeView({});
  auto attached = makeView({});
  std::weak_ptr<View> watch = attached;

  host->setAssociatedObject(kKey, std::shared_ptr<View>(attached));
  attached.reset();
  EXPECT_EQ(host->associatedObjectAs<std::shared_ptr<View>>(kKey), watch.lock());
  EXPECT_FALSE(watch.expired());
  EXPECT_EQ(host->associatedObject(kOtherKey), nullptr);
  EXPECT_EQ(host->associatedObjectAs<int>(kKey), 0);  // another type reads as empty

  host->setAssociatedObject(kKey, {});
  EXPECT_EQ(host->associatedObject(kKey), nullptr);
  EXPECT_TRUE(watch.expired());

  host->setAssociatedObject(kKey, std::shared_ptr<View>(makeView({})));
  std::weak_ptr<View> second = host->associatedObjectAs<std::shared_ptr<View>>(kKey);
  host.reset();
  EXPECT_TRUE(second.expired());
}

TEST_F(ViewTest, ReplacingAnAssociatedObjectMayReachBackIntoTheView) {
  static const int kKey = 0;
  static const int kOther = 0;
  // Its destruction stores another association on the same view.
  struct Reacher {
    View* host = nullptr;
    ~Reacher() {
      if (host)
        host->setAssociatedObject(&kOther, 7);
    }
  };
  auto host = makeView({});
  auto reacher = std::make_shared<Reacher>();
  reacher->host = host.get();
  host->setAssociatedObject(&kKey, std::move(reacher));

  host->setAssociatedObject(&kKey, 42);
  EXPECT_EQ(host->associatedObjectAs<int>(&kKey), 42);
  EXPECT_EQ(host->associatedObjectAs<int>(&kOther), 7);
}

// [Widgets]

TEST_F(ViewTest, AspectFitCentresTheImageInsideTheBounds) {
  ImageView image(nullptr, {{10, 10}, {80, 80}});
  image.setContentMode(ContentMode::ScaleAspectFit);
  EXPECT_EQ(image.imageRect({200, 100}), (Rect{{0, 20}, {80, 40}}));
  EXPECT_EQ(image.imageRect({50, 100}), (Rect{{20, 0}, {40, 80}}));
  image.setContentMode(ContentMode::ScaleAspectFill);
  EXPECT_EQ(image.imageRect({200, 100}), (Rect{{-40, 0}, {160, 80}}));
  image.setContentMode(ContentMode::BottomRight);
  EXPECT_EQ(image.imageRect({20, 10}), (Rect{{60, 70}, {20, 10}}));
  image.setContentMode(ContentMode::ScaleToFill);
  EXPECT_EQ(image.imageRect({20, 10}), (Rect{{0, 0}, {80, 80}}));
  EXPECT_EQ(image.imageRect({0, 10}), Rect{});
}

TEST_F(ViewTest, ActivityIndicatorShowsOnlyWhileSpinning) {
  ActivityIndicatorView spinner;
  EXPECT_EQ(spinner.frame().size, (Size{37, 37}));
  EXPECT_TRUE(spinner.isHidden());
  EXPECT_EQ(ActivityIndicatorView(ActivityIndicatorViewStyle::Gray).frame().size, (Size{20, 20}));

  advance(0.5);
  spinner.startAnimating();
  EXPECT_FALSE(spinner.isHidden());
  const int64_t start = animator.now();
  EXPECT_EQ(spinner.spinAngle(start), 0);
  const double step = 2 * 3.141592653589793 / ActivityIndicatorView::kSpokes;
  const int64_t ms = kNanosPerSecond / 1000;
  EXPECT_EQ(spinner.spinAngle(start + 80 * ms), 0);
  EXPECT_NEAR(spinner.spinAngle(start + 100 * ms), step, 1e-9);
  EXPECT_NEAR(spinner.spinAngle(start + 1100 * ms), step, 1e-9);  // one turn a second

  spinner.stopAnimating();
  EXPECT_TRUE(spinner.isHidden());
  EXPECT_EQ(spinner.spinAngle(start + 100 * ms), 0);
  spinner.setHidesWhenStopped(false);
  EXPECT_FALSE(spinner.isHidden());
}

TEST_F(ViewTest, DumpShowsTheTreeWithPresentationValues) {
  auto window = std::make_shared<Window>(Size{320, 480});
  auto panel = makeView({{10, 20}, {100, 50}});
  auto label = std::make_shared<Label>(Rect{{10, 10}, {80, 20}});
  label->setText("Hello");
  panel->addSubview(label);
  window->addSubview(panel);
  panel->setAlpha(0);
  View::animateWithDuration(1, [&] { panel->setAlpha(1); });
  advance(0.5);
  label->setHidden(true);

  EXPECT_EQ(window->recursiveDescription(),
            "Window frame=(0 0; 320 480)\n"
            "  View frame=(10 20; 100 50) alpha=0.5\n"
            "    Label frame=(10 10; 80 20) hidden text=\"Hello\"\n");
}

}  // namespace
}  // namespace kit
