#include "kit/ui/view_controller.h"

#include "kit/ui/navigation_controller.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

constexpr double kTransitionSeconds = 0.3;
constexpr Size kFormSheetSize = {540, 620};
constexpr double kFormSheetMinWidth = 768;

// Where presented views go: the window, or the top of the view's own tree.
std::shared_ptr<View> hostFor(const std::shared_ptr<View>& view) {
  if (auto window = view->window())
    return window;
  auto top = view;
  while (auto parent = top->superview())
    top = parent;
  return top;
}

}  // namespace

ViewController::ViewController() = default;
ViewController::~ViewController() = default;

std::shared_ptr<View> ViewController::view() {
  if (!view_)
    loadView();
  if (!view_)
    view_ = std::make_shared<View>();
  if (!viewDidLoadSent_) {
    viewDidLoadSent_ = true;
    viewDidLoad();
  }
  return view_;
}

void ViewController::loadView() {
  view_ = std::make_shared<View>();
}

std::shared_ptr<ViewController> ViewController::parentViewController() const {
  return parent_ ? parent_->weak_from_this().lock() : nullptr;
}

std::shared_ptr<NavigationController> ViewController::navigationController() const {
  for (auto parent = parentViewController(); parent; parent = parent->parentViewController()) {
    if (auto nav = std::dynamic_pointer_cast<NavigationController>(parent))
      return nav;
  }
  return nullptr;
}

Rect ViewController::presentedFrame(const View& host) const {
  const Rect b = host.bounds();
  if (presentationStyle_ == ModalPresentationStyle::FormSheet &&
      b.size.width >= kFormSheetMinWidth) {
    return {{b.midX() - kFormSheetSize.width / 2, b.midY() - kFormSheetSize.height / 2},
            kFormSheetSize};
  }
  return b;
}

void ViewController::presentViewController(std::shared_ptr<ViewController> controller,
                                           bool animated, std::function<void()> completion) {
  if (!controller || controller.get() == this || presented_ || dismissing_ ||
      controller->presenting_.lock()) {
    return;
  }
  auto host = hostFor(view());
  presented_ = controller;
  controller->presenting_ = weak_from_this();

  auto shown = controller->view();
  const Rect target = controller->presentedFrame(*host);
  const bool fullScreen = controller->presentationStyle_ == ModalPresentationStyle::FullScreen;
  shown->setAutoresizingMask(
      target == host->bounds()
          ? Autoresizing::FlexibleWidth | Autoresizing::FlexibleHeight
          : Autoresizing::FlexibleLeftMargin | Autoresizing::FlexibleRightMargin |
                Autoresizing::FlexibleTopMargin | Autoresizing::FlexibleBottomMargin);
  Rect start = target;
  if (animated)
    start.origin.y = host->bounds().maxY();
  shown->setFrame(start);

  if (fullScreen)
    viewWillDisappear(animated);
  controller->viewWillAppear(animated);
  host->addSubview(shown);
  View::animateWithDuration(
      animated ? kTransitionSeconds : 0, 0, AnimationOptions::CurveEaseInOut,
      [&] { shown->setFrame(target); },
      [self = shared_from_this(), controller, animated, fullScreen,
       completion = std::move(completion)](bool) {
        controller->viewDidAppear(animated);
        if (fullScreen)
          self->viewDidDisappear(animated);
        if (completion)
          completion();
      });
}

void ViewController::dismissViewControllerAnimated(bool animated,
                                                   std::function<void()> completion) {
  if (!presented_) {
    if (auto presenter = presenting_.lock()) {
      presenter->dismissViewControllerAnimated(animated, std::move(completion));
    }
    return;
  }
  if (dismissing_)
    return;
  dismissing_ = true;
  auto controller = presented_;
  controller->dismissPresentedChain();
  const bool fullScreen = controller->presentationStyle_ == ModalPresentationStyle::FullScreen;
  auto shown = controller->view();
  Rect target = shown->frame();
  if (auto host = shown->superview(); host && animated)
    target.origin.y = host->bounds().maxY();

  controller->viewWillDisappear(animated);
  if (fullScreen)
    viewWillAppear(animated);
  View::animateWithDuration(
      animated ? kTransitionSeconds : 0, 0, AnimationOptions::CurveEaseInOut,
      [&] { shown->setFrame(target); },
      [self = shared_from_this(), controller, shown, animated, fullScreen,
       completion = std::move(completion)](bool) {
        shown->removeFromSuperview();
        self->presented_.reset();
        controller->presenting_.reset();
        self->dismissing_ = false;
        controller->viewDidDisappear(animated);
        if (fullScreen)
          self->viewDidAppear(animated);
        if (completion)
          completion();
      });
}

void ViewController::dismissPresentedChain() {
  if (!presented_)
    return;
  auto controller = std::move(presented_);
  controller->dismissPresentedChain();
  controller->viewWillDisappear(false);
  if (controller->isViewLoaded())
    controller->view()->removeFromSuperview();
  controller->presenting_.reset();
  controller->viewDidDisappear(false);
}

}  // namespace kit
