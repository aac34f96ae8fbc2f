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
  a->removeFromSuperview();
  EXPECT_EQ(a->superview(), nullptr);

  auto other = makeView({});
  other->addSubview(b);
  EXPECT_EQ(parent->subviews(), (std::vector<std::shared_ptr<View>>{c}));
  // Cycles are refused: adding an ancestor, itself or nothing is ignored.
  other->addSubview(a);
  a->addSubview(other);
  a->addSubview(a);
  a->addSubview(nullptr);
  EXPECT_TRUE(a->subviews().empty());
  EXPECT_EQ(other->superview(), nullptr);
  EXPECT_TRUE(a->isDescendantOfView(other.get()));
  EXPECT_FALSE(other->isDescendantOfView(a.get()));

  auto window = std::make_shared<Window>(Size{320, 568});
  EXPECT_EQ(a->window(), nullptr);
  window->addSubview(other);
  EXPECT_EQ(a->window(), window);
}

// [Autoresizing]

TEST_F(ViewTest, AutoresizingStretchesPinsAndSpreadsMarginsDownTheTree) {
  auto host = makeView({{0, 0}, {300, 200}});
  auto fill = makeView({{10, 10}, {280, 180}});
  fill->setAutoresizingMask(Autoresizing::FlexibleWidth | Autoresizing::FlexibleHeight);
  auto pinnedRight = makeView({{250, 0}, {40, 20}});
  pinnedRight->setAutoresizingMask(Autoresizing::FlexibleLeftMargin);
  auto fixed = makeView({{5, 5}, {10, 10}});
  auto panel = makeView({{50, 100}, {100, 40}});  // margins 50 | 150 and 100 | 60
  panel->setAutoresizingMask(45);                 // all four margins flexible
  auto leaf = makeView({{0, 0}, {280, 180}});
  leaf->setAutoresizingMask(Autoresizing::FlexibleWidth);
  for (auto& v : {fill, pinnedRight, fixed, panel})
    host->addSubview(v);
  fill->addSubview(leaf);

  host->setFrame({{0, 0}, {500, 400}});  // +200 each way
  EXPECT_EQ(fill->frame(), (Rect{{10, 10}, {480, 380}}));
  EXPECT_EQ(leaf->frame().size.width, 480);
  EXPECT_EQ(pinnedRight->frame(), (Rect{{450, 0}, {40, 20}}));
  EXPECT_EQ(fixed->frame(), (Rect{{5, 5}, {10, 10}}));
  EXPECT_EQ(panel->frame(), (Rect{{100, 225}, {100, 40}}));

  fill->setAutoresizesSubviews(false);
  host->setBounds({{0, 0}, {600, 400}});
  EXPECT_EQ(fill->frame().size.width, 580);
  EXPECT_EQ(leaf->frame().size.width, 480);

  host->setFrame({{0, 0}, {0, 0}});  // never shrinks below zero
  EXPECT_EQ(fill->frame().size, (Size{0, 0}));
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

TEST_F(HitTest, DeepestTopmostVisibleInteractiveViewWins) {
  EXPECT_EQ(window->hitTest({35, 55}), button);
  EXPECT_EQ(window->hitTest({100, 100}), panel);
  EXPECT_EQ(window->hitTest({5, 5}), window);
  EXPECT_EQ(window->hitTest({320, 10}), nullptr);  // right edge is outside
  EXPECT_EQ(window->hitTest({20, 40}), panel);     // top-left edge is inside

  panel->setHidden(true);
  EXPECT_EQ(window->hitTest({35, 55}), window);
  panel->setHidden(false);
  panel->setAlpha(0.009);
  EXPECT_EQ(window->hitTest({35, 55}), window);
  panel->setAlpha(0.01);
  button->setUserInteractionEnabled(false);
  EXPECT_EQ(window->hitTest({35, 55}), panel);
  panel->setUserInteractionEnabled(false);
  button->setUserInteractionEnabled(true);
  EXPECT_EQ(window->hitTest({35, 55}), window);
  panel->setUserInteractionEnabled(true);

  button->setFrame({{190, 90}, {50, 50}});  // pokes out of the panel: not reached there
  EXPECT_EQ(window->hitTest({215, 135}), button);
  EXPECT_EQ(window->hitTest({235, 135}), window);
  auto cover = makeView({{0, 0}, {200, 100}});
  panel->addSubview(cover);
  EXPECT_EQ(window->hitTest({215, 135}), cover);  // the topmost sibling
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

  host->setAssociatedObject(kKey, {});
  EXPECT_EQ(host->associatedObject(kKey), nullptr);
  EXPECT_TRUE(watch.expired());

  host->setAssociatedObject(kKey, std::shared_ptr<View>(makeView({})));
  std::weak_ptr<View> second = host->associatedObjectAs<std::shared_ptr<View>>(kKey);
  host.reset();
  EXPECT_TRUE(second.expired());
}

// [Widgets]

TEST_F(ViewTest, AspectFitCentresTheImageInsideTheBounds) {
  ImageView image(nullptr, {{10, 10}, {80, 80}});
  image.setContentMode(ContentMode::ScaleAspectFit);
  EXPECT_EQ(image.imageRect({50, 100}), (Rect{{20, 0}, {40, 80}}));
  image.setContentMode(ContentMode::ScaleAspectFill);
  EXPECT_EQ(image.imageRect({200, 100}), (Rect{{-40, 0}, {160, 80}}));
  image.setContentMode(ContentMode::BottomRight);
  EXPECT_EQ(image.imageRect({20, 10}), (Rect{{60, 70}, {20, 10}}));
  EXPECT_EQ(image.imageRect({0, 10}), Rect{});
}

TEST_F(ViewTest, ActivityIndicatorShowsOnlyWhileSpinningAndTurnsInSteps) {
  ActivityIndicatorView spinner;
  EXPECT_TRUE(spinner.isHidden());
  advance(0.5);
  spinner.startAnimating();
  EXPECT_FALSE(spinner.isHidden());
  const int64_t start = animator.now(), ms = kNanosPerSecond / 1000;
  const double step = 2 * 3.141592653589793 / ActivityIndicatorView::kSpokes;
  EXPECT_EQ(spinner.spinAngle(start + 80 * ms), 0);
  EXPECT_NEAR(spinner.spinAngle(start + 1100 * ms), step, 1e-9);  // one turn a second
  spinner.stopAnimating();
  EXPECT_TRUE(spinner.isHidden());
}

}  // namespace
}  // namespace kit
