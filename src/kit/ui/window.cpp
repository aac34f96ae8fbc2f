#include "kit/ui/window.h"

#include "kit/ui/view_controller.h"

namespace kit {

Window::Window(Size size) : View(Rect{{0, 0}, size}) {}

void Window::setRootViewController(std::shared_ptr<ViewController> controller) {
  if (controller == rootViewController_)
    return;
  if (rootViewController_ && rootViewController_->isViewLoaded()) {
    auto old = rootViewController_->view();
    if (old->superview().get() == this)
      old->removeFromSuperview();
  }
  rootViewController_ = std::move(controller);
  if (!rootViewController_)
    return;
  auto view = rootViewController_->view();
  view->setFrame(bounds());
  view->setAutoresizingMask(Autoresizing::FlexibleWidth | Autoresizing::FlexibleHeight);
  insertSubview(view, 0);
  rootViewController_->viewWillAppear(false);
  rootViewController_->viewDidAppear(false);
}

}  // namespace kit
