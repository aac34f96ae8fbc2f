#pragma once

#include <memory>

#include "kit/render/application.h"

namespace kit {
class ViewController;
}

// The application's delegate. It holds the window (ApplicationDelegate's
// window, strong) and forwards going to the background and coming back to
// the top view controller's appearance hooks; the other lifecycle calls are
// kept on purpose as empty hooks: the game is neither paused nor saved.
class AppDelegate final : public kit::ApplicationDelegate {
 public:
  // Nothing to set up: the interface layout brings the window and the host.
  bool applicationDidFinishLaunchingWithOptions(kit::Application& application,
                                                const kit::Value::Dictionary& options) override;
  // Kept on purpose: losing focus changes nothing.
  void applicationWillResignActive(kit::Application& application) override;
  // viewWillDisappear(true) to the navigation controller's top controller.
  void applicationDidEnterBackground(kit::Application& application) override;
  // viewWillAppear(true) to the navigation controller's top controller.
  void applicationWillEnterForeground(kit::Application& application) override;
  // Kept on purpose: regaining focus changes nothing.
  void applicationDidBecomeActive(kit::Application& application) override;
  // Kept on purpose: the application writes the preferences as it ends.
  void applicationWillTerminate(kit::Application& application) override;

 private:
  // The topViewController of the window's root navigation controller, or
  // null when the root is none.
  std::shared_ptr<kit::ViewController> topViewController() const;
};
