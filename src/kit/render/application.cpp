#include "kit/render/application.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "kit/foundation/bundle.h"
#include "kit/render/frame_pacer.h"
#include "kit/render/input_map.h"
#include "kit/render/renderer.h"
#include "kit/render/sprite_view.h"
#include "kit/render/touch_receiver.h"
#include "kit/scene/frame_driver.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/animator.h"
#include "kit/ui/key_receiver.h"
#include "kit/ui/screen.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

// Where one touch goes: the scene (in scene points), a view that handles
// touches itself, or nowhere (a view swallowed it, or nothing is there).
struct Route {
  std::shared_ptr<View> receiverView;  // held until the touch is delivered
  std::function<void()> deliver;
  std::optional<Point> inScene;
};

// The platform's responder chain: from the topmost view under the point up
// through its superviews, the first that handles touches takes it (a
// TouchReceiver, or an alert).
Route route(Window& window, const std::shared_ptr<SpriteView>& sprite, Point windowPoint) {
  Route r;
  for (std::shared_ptr<View> v = window.hitTest(windowPoint); v; v = v->superview()) {
    const Point inView = v->convertPointFromView(windowPoint, nullptr);
    if (auto* receiver = dynamic_cast<TouchReceiver*>(v.get())) {
      r.receiverView = v;
      r.deliver = [receiver, inView] { receiver->touchesBegan({inView}); };
      return r;
    }
    if (auto* alert = dynamic_cast<AlertView*>(v.get())) {
      r.receiverView = v;
      r.deliver = [alert, inView] { alert->touchesBegan({inView}); };
      return r;
    }
    if (sprite && v == sprite) {
      if (sprite->scene()) {
        r.inScene = sprite->convertPointToScene(sprite->convertPointFromView(windowPoint, nullptr));
      }
      return r;
    }
  }
  return r;
}

}  // namespace

Application::Application(ApplicationOptions options, std::shared_ptr<ApplicationDelegate> delegate,
                         const Services& services, WindowSystem* windows)
    : options_(std::move(options)),
      delegate_(std::move(delegate)),
      services_(services),
      windows_(windows) {
  Screen::setMain(&screen_);
  graphicsBefore_ = Graphics::setCurrent(&services_.graphics);
  frameDriver_ = std::make_unique<FrameDriver>(services_.runLoop);
  animator_ = std::make_unique<Animator>(services_.clock);
  Animator::setCurrent(animator_.get());
}

Application::~Application() {
  // Everything that borrows the services goes first: the scene, the
  // controllers and views, then the window.
  frameDriver_->presentScene(nullptr);
  if (delegate_)
    delegate_->setWindow(nullptr);
  instance_.reset();
  renderer_.reset();
  platformWindow_.reset();
  Graphics::setCurrent(graphicsBefore_);
}

void Application::registerViewControllerClass(std::string name,
                                              InterfaceLayout::ControllerFactory factory) {
  classes_[std::move(name)] = std::move(factory);
}

Status Application::launch() {
  if (launched_)
    return {};
  Result<InterfaceLayout> layout =
      InterfaceLayout::load(services_.bundle.resources(), "layout/main.json");
  if (!layout)
    return Error{layout.error()};
  const DeviceProfile* named = layout->profile(options_.profile);
  if (!named)
    return Error{"unknown device profile \"" + options_.profile + "\""};
  DeviceProfile profile = *named;
  if (options_.sceneSize)
    profile.scene = *options_.sceneSize;

  if (options_.window) {
    WindowOptions w;
    w.title = options_.title;
    w.content = profile.window();
    w.scale = options_.windowScale;
    w.fullscreen = options_.fullscreen;
    w.icon = options_.icon;
    if (!windows_)
      return Error{"no window system: this program runs headless only"};
    w.renderer = options_.renderer;
    Result<std::unique_ptr<PlatformWindow>> opened = windows_->open(w);
    if (!opened)
      return Error{opened.error()};
    platformWindow_ = std::move(*opened);
    services_.log.write("Drawing with SDL's " + platformWindow_->rendererName() +
                        " renderer, vsync " + (platformWindow_->vsync() ? "on" : "off"));
    const Bundle& bundle = services_.bundle;
    renderer_ = std::make_unique<Renderer>(
        *platformWindow_, services_.graphics.images(), bundle.resources(),
        [&bundle](std::string_view name) { return bundle.imageResource(name); }, services_.log);
  }

  services_.device.userInterfaceIdiom = profile.idiom;
  Result<InterfaceLayout::Instance> made = layout->instantiate(profile, classes_);
  if (!made)
    return Error{made.error()};
  instance_.emplace(std::move(*made));
  updateScreen();

  delegate_->setWindow(instance_->window);
  delegate_->applicationDidFinishLaunchingWithOptions(*this, {});
  instance_->install();
  syncScene();
  launched_ = true;
  delegate_->applicationDidBecomeActive(*this);
  return {};
}

std::shared_ptr<Window> Application::window() const {
  return instance_ ? instance_->window : nullptr;
}

std::shared_ptr<SpriteView> Application::spriteView() const {
  return instance_ ? instance_->spriteView : nullptr;
}

FrameDriver& Application::frameDriver() {
  return *frameDriver_;
}
Animator& Application::animator() {
  return *animator_;
}

Viewport Application::viewport() const {
  if (platformWindow_)
    return platformWindow_->viewport();
  const Size content = instance_ ? instance_->profile.window() : Size{320, 568};
  return Viewport::fit(content, content, 1);
}

void Application::updateScreen() {
  if (!instance_)
    return;
  const Size points = instance_->profile.window();
  Screen::main().setBounds(points);
  services_.device.screenWidth = points.width;
  services_.device.screenHeight = points.height;
  if (platformWindow_) {
    const double scale = platformWindow_->viewport().pixelsPerPoint();
    Screen::main().setScale(scale);
    services_.device.screenScale = Screen::main().scale();
  }
}

void Application::syncScene() {
  auto sprite = spriteView();
  if (sprite && sprite->scene() != frameDriver_->scene())
    frameDriver_->presentScene(sprite->scene());
}

// --- The loop -------------------------------------------------------------------

int Application::run(std::optional<uint64_t> frameLimit) {
  if (!launched_)
    return 1;
  using SteadyClock = std::chrono::steady_clock;
  auto nanosNow = [] {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               SteadyClock::now().time_since_epoch())
        .count();
  };
  FramePacer pacer;
  if (platformWindow_)
    pacer.setRefreshRate(platformWindow_->refreshRate());
  uint64_t frames = 0;
  while (!quitRequested_) {
    if (platformWindow_ && !platformWindow_->isVisible()) {
      // Minimised: nothing to draw and nothing runs (as a sprite view in the
      // background); sleep until the window says something.
      platformWindow_->waitForEvents(250);
      pollEvents();
      continue;
    }
    runFrame();
    if (frameLimit && ++frames >= *frameLimit)
      break;
    const int64_t sleep = pacer.sleepAfterFrame(nanosNow(), lastPresentNanos_);
    if (sleep > 0)
      std::this_thread::sleep_for(std::chrono::nanoseconds(sleep));
  }
  terminate();
  return 0;
}

void Application::runFrame() {
  pollEvents();
  syncScene();
  if (frameHook_)
    frameHook_();
  frameDriver_->runFrame();
  finishFrame();
}

void Application::finishFrame() {
  animator_->tick();
  syncScene();
  if (platformWindow_ && platformWindow_->isVisible()) {
    renderer_->drawFrame(*instance_->window, platformWindow_->viewport(),
                         services_.clock.monotonicNanos());
    const auto beforePresent = std::chrono::steady_clock::now();
    platformWindow_->present();
    lastPresentNanos_ = std::chrono::duration_cast<std::chrono::nanoseconds>(
                            std::chrono::steady_clock::now() - beforePresent)
                            .count();
    if (!presented_) {
      presented_ = true;
      if (std::getenv("TWINLANES_STARTUP_TRACE")) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        services_.log.write(
            "startup: first frame presented at steady time " +
            std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) +
            " ns");
      }
    }
  }
}

void Application::terminate() {
  if (terminated_ || !launched_)
    return;
  terminated_ = true;
  send(lifecycle_.terminate());
  services_.defaults.synchronize();
}

void Application::pollEvents() {
  if (!platformWindow_)
    return;
  std::vector<Point> touches;
  bool left = false, right = false, primary = false;

  events_.clear();
  platformWindow_->poll(events_);
  for (const PlatformEvent& event : events_)
    handle(event, touches, left, right, primary);
  if (!touches.empty())
    touchesBegan(touches);
  if (left || right)
    tapHalves(left, right);
  if (primary)
    pressPrimary();
}

void Application::handle(const PlatformEvent& event, std::vector<Point>& touches, bool& left,
                         bool& right, bool& primary) {
  auto act = [&](InputAction action) {
    switch (action) {
      case InputAction::TapLeft:
        left = true;
        break;
      case InputAction::TapRight:
        right = true;
        break;
      case InputAction::Primary:
        primary = true;
        break;
      case InputAction::Quit:
        quit();
        break;
      case InputAction::ToggleFullscreen:
        toggleFullscreen();
        break;
      case InputAction::None:
        break;
    }
  };
  // A modal panel (an alert) takes the keys it knows before the game does.
  auto offerKey = [this](std::optional<Key> key) {
    auto window = this->window();
    return key && window && deliverKey(*window, *key);
  };
  using Window = PlatformEvent::Window;
  if (const auto* down = std::get_if<PlatformEvent::TouchesBegan>(&event.what)) {
    touches.insert(touches.end(), down->points.begin(), down->points.end());
  } else if (const auto* key = std::get_if<PlatformEvent::KeyDown>(&event.what)) {
    if (!offerKey(keyForPanel(key->key, key->modifiers)))
      act(actionForKey(key->key, key->modifiers));
  } else if (const auto* pad = std::get_if<PlatformEvent::PadPressed>(&event.what)) {
    if (!offerKey(keyForPanelFromController(pad->button)))
      act(actionForControllerButton(pad->button));
  } else if (const auto* w = std::get_if<PlatformEvent::WindowEvent>(&event.what)) {
    switch (w->what) {
      case Window::Close:
        quit();
        break;
      case Window::FocusGained:
        windowFocusChanged(true);
        break;
      case Window::FocusLost:
        windowFocusChanged(false);
        break;
      case Window::Hidden:
        windowVisibilityChanged(false);
        break;
      case Window::Shown:
        windowVisibilityChanged(true);
        break;
      case Window::Resized:
        updateScreen();
        break;
    }
  } else if (std::holds_alternative<PlatformEvent::Quit>(event.what)) {
    quit();
  }
}

// --- Input --------------------------------------------------------------------------

void Application::touchesBegan(const std::vector<Point>& windowPoints) {
  auto window = this->window();
  if (!window)
    return;
  auto sprite = spriteView();
  std::vector<Point> inScene;
  std::vector<Route> handled;
  for (Point p : windowPoints) {
    Route r = route(*window, sprite, p);
    if (r.inScene)
      inScene.push_back(*r.inScene);
    if (r.deliver)
      handled.push_back(std::move(r));
  }
  // Delivered after routing, so that a receiver changing the tree cannot
  // disturb the routing of the event's other touches.
  for (Route& r : handled)
    r.deliver();
  if (!inScene.empty())
    frameDriver_->touchesBegan(std::move(inScene));
}

std::optional<Point> Application::windowPointOfScene(Point scenePoint) const {
  auto sprite = spriteView();
  if (!sprite || !sprite->scene())
    return std::nullopt;
  const Point inView = sprite->scene()->sceneToView(sprite->bounds().size).apply(scenePoint);
  return sprite->convertPointToView(inView, nullptr);
}

bool Application::sceneCoveredAt(Point scenePoint) {
  auto window = this->window();
  const std::optional<Point> p = windowPointOfScene(scenePoint);
  if (!window || !p)
    return true;
  return !route(*window, spriteView(), *p).inScene;
}

std::shared_ptr<View> Application::viewCoveringScene(Point scenePoint) {
  auto window = this->window();
  const std::optional<Point> p = windowPointOfScene(scenePoint);
  if (!window || !p)
    return nullptr;
  Route r = route(*window, spriteView(), *p);
  if (r.inScene)
    return nullptr;
  return r.receiverView ? r.receiverView : window->hitTest(*p);
}

void Application::tapHalves(bool left, bool right) {
  auto sprite = spriteView();
  if (!sprite || !sprite->scene())
    return;
  // Low on each half, clear of the buttons in the middle of the screens.
  const Rect scene = sprite->scene()->frame();
  std::vector<Point> points;
  if (left)
    points.push_back(
        {scene.minX() + scene.size.width * 0.25, scene.minY() + scene.size.height * 0.25});
  if (right)
    points.push_back(
        {scene.minX() + scene.size.width * 0.75, scene.minY() + scene.size.height * 0.25});
  std::erase_if(points, [this](Point p) { return sceneCoveredAt(p); });
  if (!points.empty())
    frameDriver_->touchesBegan(std::move(points));
}

void Application::pressPrimary() {
  if (!primaryHook_)
    return;
  const std::optional<Point> button = primaryHook_();
  if (button && !sceneCoveredAt(*button))
    frameDriver_->touchesBegan({*button});
}

// --- Lifecycle and screen ----------------------------------------------------------

void Application::send(const std::vector<Lifecycle::Call>& calls) {
  for (Lifecycle::Call call : calls) {
    switch (call) {
      case Lifecycle::Call::WillResignActive:
        delegate_->applicationWillResignActive(*this);
        break;
      case Lifecycle::Call::DidEnterBackground:
        delegate_->applicationDidEnterBackground(*this);
        break;
      case Lifecycle::Call::WillEnterForeground:
        delegate_->applicationWillEnterForeground(*this);
        break;
      case Lifecycle::Call::DidBecomeActive:
        delegate_->applicationDidBecomeActive(*this);
        break;
      case Lifecycle::Call::WillTerminate:
        delegate_->applicationWillTerminate(*this);
        break;
    }
  }
}

void Application::windowFocusChanged(bool focused) {
  send(focused ? lifecycle_.focusGained() : lifecycle_.focusLost());
}

void Application::windowVisibilityChanged(bool visible) {
  send(visible ? lifecycle_.shown() : lifecycle_.hidden());
}

void Application::toggleFullscreen() {
  if (!platformWindow_)
    return;
  platformWindow_->setFullscreen(!platformWindow_->isFullscreen());
  updateScreen();
}

Status Application::saveScreenshot(const std::filesystem::path& file) {
  if (!platformWindow_ || !instance_)
    return Error{"no window to take a screenshot of"};
  renderer_->drawFrame(*instance_->window, platformWindow_->viewport(),
                       services_.clock.monotonicNanos());
  return platformWindow_->saveScreenshot(file);
}

}  // namespace kit
