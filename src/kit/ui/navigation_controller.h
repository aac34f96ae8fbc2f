#pragma once

#include <memory>
#include <vector>

#include "kit/ui/view_controller.h"

namespace kit {

// A stack of child controllers whose top one's view fills this controller's
// view. It owns its children and forwards its own appearance calls to the top
// one. Pushing and popping swap the views at once (the animated flag only
// reaches the appearance calls, which are sent while the view is in a window).
class NavigationController : public ViewController {
 public:
  explicit NavigationController(std::shared_ptr<ViewController> rootViewController);
  ~NavigationController() override;

  const std::vector<std::shared_ptr<ViewController>>& viewControllers() const { return stack_; }
  std::shared_ptr<ViewController> topViewController() const;
  // The controller presented over the top one, if any, else the top one.
  std::shared_ptr<ViewController> visibleViewController() const;

  // Ignores a null controller or one already in a stack.
  void pushViewController(std::shared_ptr<ViewController> controller, bool animated);
  // Pops and returns the top controller; the root stays (nullptr then).
  std::shared_ptr<ViewController> popViewControllerAnimated(bool animated);

  void loadView() override;
  void viewWillAppear(bool animated) override;
  void viewDidAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  void viewDidDisappear(bool animated) override;

 private:
  void showTop();

  std::vector<std::shared_ptr<ViewController>> stack_;
};

}  // namespace kit
