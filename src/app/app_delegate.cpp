#include "app/app_delegate.h"

#include "kit/ui/navigation_controller.h"
#include "kit/ui/window.h"

bool AppDelegate::applicationDidFinishLaunchingWithOptions(kit::Application&,
                                                           const kit::Value::Dictionary&) {
  return true;
}

void AppDelegate::applicationWillResignActive(kit::Application&) {}

void AppDelegate::applicationDidEnterBackground(kit::Application&) {
  if (auto top = topViewController())
    top->viewWillDisappear(true);
}

void AppDelegate::applicationWillEnterForeground(kit::Application&) {
  if (auto top = topViewController())
    top->viewWillAppear(true);
}

void AppDelegate::applicationDidBecomeActive(kit::Application&) {}

void AppDelegate::applicationWillTerminate(kit::Application&) {}

std::shared_ptr<kit::ViewController> AppDelegate::topViewController() const {
  if (!window())
    return nullptr;
  auto nav = std::dynamic_pointer_cast<kit::NavigationController>(window()->rootViewController());
  return nav ? nav->topViewController() : nullptr;
}
