#include "kit/ui/view_controller.h"

#include <gtest/gtest.h>

#include "kit/ui/navigation_controller.h"
#include "kit/ui/window.h"
#include "ui_fixture.h"

namespace kit {
namespace {

// Writes each lifecycle call into a shared journal as "name.call".
class RecordingController : public ViewController {
 public:
  RecordingController(std::string name, std::vector<std::string>& journal)
      : name_(std::move(name)), journal_(journal) {}
  void viewDidLoad() override { note("didLoad"); }
  void viewWillAppear(bool animated) override { note("willAppear", animated); }
  void viewDidAppear(bool) override { note("didAppear"); }
  void viewWillDisappear(bool animated) override { note("willDisappear", animated); }
  void viewDidDisappear(bool) override { note("didDisappear"); }

 private:
  void note(const std::string& call, bool animated = false) {
    journal_.push_back(name_ + "." + call + (animated ? "+" : ""));
  }
  std::string name_;
  std::vector<std::string>& journal_;
};

class ViewControllerTest : public UiTest {
 protected:
  std::shared_ptr<RecordingController> controller(const std::string& name) {
    return std::make_shared<RecordingController>(name, events);
  }
  std::shared_ptr<Window> window = std::make_shared<Window>(Size{320, 568});
};

TEST_F(ViewControllerTest, RootControllerFillsTheWindowAndFollowsItsSize) {
  auto host = controller("host");
  window->setRootViewController(host);
  EXPECT_EQ(host->view()->superview(), window);
  EXPECT_EQ(host->view()->frame(), window->bounds());
  EXPECT_EQ(events,
            (std::vector<std::string>{"host.didLoad", "host.willAppear", "host.didAppear"}));
  window->setFrame({{0, 0}, {768, 1024}});
  EXPECT_EQ(host->view()->frame().size, (Size{768, 1024}));
  window->setRootViewController(controller("other"));
  EXPECT_EQ(host->view()->superview(), nullptr);
}

TEST_F(ViewControllerTest, NavigationControllerShowsAndForwardsToItsTop) {
  auto host = controller("host");
  auto nav = std::make_shared<NavigationController>(host);
  window->setRootViewController(nav);
  EXPECT_EQ(nav->topViewController(), host);
  EXPECT_EQ(host->view()->frame(), window->bounds());
  events.clear();
  auto second = controller("second");
  nav->pushViewController(second, false);
  EXPECT_EQ(nav->viewControllers().size(), 2u);
  EXPECT_EQ(host->view()->superview(), nullptr);
  EXPECT_EQ(events,
            (std::vector<std::string>{"second.didLoad", "host.willDisappear", "second.willAppear",
                                      "host.didDisappear", "second.didAppear"}));
  EXPECT_EQ(nav->popViewControllerAnimated(false), second);
  EXPECT_EQ(nav->popViewControllerAnimated(false), nullptr);  // the root stays
  EXPECT_EQ(host->view()->superview(), nav->view());
}

TEST_F(ViewControllerTest, AnimatedPresentationSlidesUpThenCompletes) {
  auto host = controller("host");
  window->setRootViewController(host);
  events.clear();
  auto sheet = controller("sheet");
  bool presented = false;
  host->presentViewController(sheet, true, [&] { presented = true; });

  EXPECT_EQ(sheet->presentingViewController(), host);
  EXPECT_EQ(window->subviews().back(), sheet->view());
  EXPECT_EQ(sheet->view()->presentationFrame().origin.y, 568);  // starts below the window
  EXPECT_FALSE(presented);

  advance(0.15);
  EXPECT_GT(sheet->view()->presentationFrame().origin.y, 0);
  EXPECT_LT(sheet->view()->presentationFrame().origin.y, 568);
  advance(0.2);
  EXPECT_TRUE(presented);
  EXPECT_EQ(events,
            (std::vector<std::string>{"sheet.didLoad", "host.willDisappear+", "sheet.willAppear+",
                                      "sheet.didAppear", "host.didDisappear"}));
}

TEST_F(ViewControllerTest, DismissalRemovesTheViewAndClearsTheLinksAtTheEnd) {
  auto host = controller("host");
  window->setRootViewController(host);
  auto sheet = controller("sheet");
  host->presentViewController(sheet, false);
  tick();
  events.clear();

  bool dismissed = false;
  sheet->dismissViewControllerAnimated(true, [&] { dismissed = true; });  // asks its presenter
  host->dismissViewControllerAnimated(true);  // already under way: ignored
  advance(0.1);
  EXPECT_EQ(host->presentedViewController(), sheet);
  EXPECT_FALSE(dismissed);
  advance(0.25);
  EXPECT_TRUE(dismissed);
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(sheet->presentingViewController(), nullptr);
  EXPECT_EQ(sheet->view()->superview(), nullptr);
  EXPECT_EQ(events, (std::vector<std::string>{"sheet.willDisappear+", "host.willAppear+",
                                              "sheet.didDisappear", "host.didAppear"}));
}

TEST_F(ViewControllerTest, SecondPresentationIsIgnoredAndDismissingTheBottomTakesTheChain) {
  auto host = controller("host");
  window->setRootViewController(host);
  auto first = controller("first");
  auto second = controller("second");
  bool called = false;
  host->presentViewController(first, false);
  host->presentViewController(second, false, [&] { called = true; });
  first->presentViewController(first, false);
  advance(0.1);
  EXPECT_EQ(host->presentedViewController(), first);
  EXPECT_FALSE(called);
  EXPECT_FALSE(second->isViewLoaded());

  first->presentViewController(second, false);
  tick();
  host->dismissViewControllerAnimated(false);
  tick();
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(first->presentedViewController(), nullptr);
  EXPECT_EQ(window->subviews().size(), 1u);
}

}  // namespace
}  // namespace kit
