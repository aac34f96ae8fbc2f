#pragma once

#include <functional>
#include <memory>
#include <string>

#include "kit/ui/view.h"

namespace kit {

class NavigationController;

// The platform's values; FormSheet is a centred 540 x 620 panel on a window at
// least 768 points wide and full screen otherwise.
enum class ModalPresentationStyle {
  FullScreen = 0,
  PageSheet = 1,
  FormSheet = 2,
  OverFullScreen = 5,
};

// Owns one screen's root view (loaded on first use) and receives its
// appearance calls. Held by shared_ptr: a window holds its root controller, a
// navigation controller its children, a presenter the controller it presents;
// back links are weak. Main thread only.
class ViewController : public std::enable_shared_from_this<ViewController> {
 public:
  ViewController();
  virtual ~ViewController();
  ViewController(const ViewController&) = delete;
  ViewController& operator=(const ViewController&) = delete;

  // The root view, made by loadView() then viewDidLoad() on first use.
  std::shared_ptr<View> view();
  bool isViewLoaded() const { return view_ != nullptr; }
  // Supplies the view (as an interface layout does); viewDidLoad() still
  // runs once, at the first view() call.
  void setView(std::shared_ptr<View> view) { view_ = std::move(view); }

  // Hooks, empty by default.
  virtual void loadView();  // makes a plain view with an empty frame
  virtual void viewDidLoad() {}
  virtual void viewWillAppear(bool /*animated*/) {}
  virtual void viewDidAppear(bool /*animated*/) {}
  virtual void viewWillDisappear(bool /*animated*/) {}
  virtual void viewDidDisappear(bool /*animated*/) {}
  virtual void didReceiveMemoryWarning() {}

  // Shows `controller` modally over the window of this controller's view
  // (over the top of this view's tree when it has no window), sliding up from
  // the bottom in 0.3 s when animated. A full-screen presentation sends this
  // controller viewWillDisappear/viewDidDisappear (and the Appear pair when
  // dismissed); the other styles leave it alone. The completion runs once it is in
  // place (with an animator installed, at a tick: never inside this call).
  // Ignored, completion included, while this controller presents another or
  // when `controller` is null, this one, or presented elsewhere.
  void presentViewController(std::shared_ptr<ViewController> controller, bool animated,
                             std::function<void()> completion = {});
  // Dismisses the controller this one presents, or, when it presents none,
  // this controller from its presenter; with it go any it presents in turn.
  // The links clear and the completion runs once the view is gone. Ignored
  // when there is nothing to dismiss or a dismissal is under way.
  void dismissViewControllerAnimated(bool animated, std::function<void()> completion = {});

  std::shared_ptr<ViewController> presentedViewController() const { return presented_; }
  std::shared_ptr<ViewController> presentingViewController() const { return presenting_.lock(); }
  ModalPresentationStyle modalPresentationStyle() const { return presentationStyle_; }
  void setModalPresentationStyle(ModalPresentationStyle style) { presentationStyle_ = style; }

  std::shared_ptr<ViewController> parentViewController() const;
  // The nearest navigation controller among the parents, or nullptr.
  std::shared_ptr<NavigationController> navigationController() const;

 private:
  friend class NavigationController;

  Rect presentedFrame(const View& host) const;
  void dismissPresentedChain();

  std::shared_ptr<View> view_;
  std::shared_ptr<ViewController> presented_;
  std::weak_ptr<ViewController> presenting_;
  ViewController* parent_ = nullptr;  // the owning parent clears it when letting go
  ModalPresentationStyle presentationStyle_ = ModalPresentationStyle::FullScreen;
  bool viewDidLoadSent_ = false;
  bool dismissing_ = false;
};

}  // namespace kit
