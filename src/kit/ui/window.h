#pragma once

#include <memory>

#include "kit/ui/view.h"

namespace kit {

class ViewController;

// The top of the view tree: the screen-sized view that the renderer draws and
// that input is routed through (hitTest in window points). It holds the root
// view controller, whose view fills it; presented controllers' views are
// added above that. One per application.
class Window : public View {
 public:
  explicit Window(Size size);
  std::string className() const override { return "Window"; }

  Size size() const { return bounds().size; }

  std::shared_ptr<ViewController> rootViewController() const { return rootViewController_; }
  // Installs the controller's view (loading it) as the bottom subview,
  // sized to the window and resizing with it, replacing the former root's
  // view; the new root gets viewWillAppear(false) and viewDidAppear(false).
  void setRootViewController(std::shared_ptr<ViewController> controller);

 private:
  std::shared_ptr<ViewController> rootViewController_;
};

}  // namespace kit
