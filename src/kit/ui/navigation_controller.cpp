#include "kit/ui/navigation_controller.h"

namespace kit {

NavigationController::NavigationController(std::shared_ptr<ViewController> rootViewController) {
  if (rootViewController && !rootViewController->parent_) {
    rootViewController->parent_ = this;
    stack_.push_back(std::move(rootViewController));
  }
}

NavigationController::~NavigationController() {
  for (auto& child : stack_)
    child->parent_ = nullptr;
}

std::shared_ptr<ViewController> NavigationController::topViewController() const {
  return stack_.empty() ? nullptr : stack_.back();
}

std::shared_ptr<ViewController> NavigationController::visibleViewController() const {
  auto top = topViewController();
  if (!top)
    return nullptr;
  while (auto presented = top->presentedViewController())
    top = presented;
  return top;
}

void NavigationController::loadView() {
  ViewController::loadView();
  showTop();
}

void NavigationController::showTop() {
  if (!isViewLoaded() || stack_.empty())
    return;
  auto container = view_;
  for (const auto& child : stack_) {
    if (child->isViewLoaded() && child->view_->superview() == container) {
      child->view_->removeFromSuperview();
    }
  }
  auto shown = stack_.back()->view();
  shown->setFrame(container->bounds());
  shown->setAutoresizingMask(Autoresizing::FlexibleWidth | Autoresizing::FlexibleHeight);
  container->addSubview(shown);
}

void NavigationController::pushViewController(std::shared_ptr<ViewController> controller,
                                              bool animated) {
  if (!controller || controller->parent_ || controller.get() == this)
    return;
  auto previous = topViewController();
  const bool visible = isViewLoaded() && view_->window();
  controller->parent_ = this;
  stack_.push_back(controller);
  if (visible)
    controller->view();  // loaded before it hears it will appear
  if (visible && previous)
    previous->viewWillDisappear(animated);
  if (visible)
    controller->viewWillAppear(animated);
  showTop();
  if (visible && previous)
    previous->viewDidDisappear(animated);
  if (visible)
    controller->viewDidAppear(animated);
}

std::shared_ptr<ViewController> NavigationController::popViewControllerAnimated(bool animated) {
  if (stack_.size() < 2)
    return nullptr;
  auto popped = stack_.back();
  const bool visible = isViewLoaded() && view_->window();
  if (visible)
    popped->viewWillDisappear(animated);
  if (visible)
    stack_[stack_.size() - 2]->viewWillAppear(animated);
  if (popped->isViewLoaded())
    popped->view_->removeFromSuperview();
  stack_.pop_back();
  popped->parent_ = nullptr;
  showTop();
  if (visible)
    popped->viewDidDisappear(animated);
  if (visible)
    stack_.back()->viewDidAppear(animated);
  return popped;
}

void NavigationController::viewWillAppear(bool animated) {
  if (auto top = topViewController())
    top->viewWillAppear(animated);
}
void NavigationController::viewDidAppear(bool animated) {
  if (auto top = topViewController())
    top->viewDidAppear(animated);
}
void NavigationController::viewWillDisappear(bool animated) {
  if (auto top = topViewController())
    top->viewWillDisappear(animated);
}
void NavigationController::viewDidDisappear(bool animated) {
  if (auto top = topViewController())
    top->viewDidDisappear(animated);
}

}  // namespace kit
