#include "kit/render/application.h"

#include <SDL.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "kit/foundation/bundle.h"
#include "kit/render/frame_pacer.h"
#include "kit/render/input_map.h"
#include "kit/render/render_window.h"
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

struct Application::OwnedServices {
  explicit OwnedServices(const ApplicationOptions& options)
      : runLoop(clock),
        defaults(preferencesFolder(options), log),
        bundle(options.resourceDir, &defaults, log),
        device(Device::detect()) {}

  static std::filesystem::path preferencesFolder(const ApplicationOptions& options) {
    if (options.prefsDir.empty())
      return UserDefaults::defaultFolder();
    std::error_code ignored;
    std::filesystem::create_directories(options.prefsDir, ignored);
    return options.prefsDir;
  }

  Services services() {
    return {clock, runLoop, notifications, defaults, bundle, log, http, urlOpener, device};
  }

  // Declared in construction order: each may use those above it.
  SystemClock clock;
  StderrLog log;
  RunLoop runLoop;
  NotificationCenter notifications;
  UserDefaults defaults;
  Bundle bundle;
  CurlHttpClient http;
  DesktopUrlOpener urlOpener;
  Device device;
};

struct Application::Controllers {
  std::vector<SDL_GameController*> open;
  ~Controllers() {
    for (SDL_GameController* c : open)
      SDL_GameControllerClose(c);
    SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
  }
  void added(int deviceIndex) {
    if (!SDL_IsGameController(deviceIndex))
      return;
    if (SDL_GameController* c = SDL_GameControllerOpen(deviceIndex))
      open.push_back(c);
  }
  void removed(SDL_JoystickID id) {
    std::erase_if(open, [id](SDL_GameController* c) {
      if (SDL_JoystickInstanceID(SDL_GameControllerGetJoystick(c)) != id)
        return false;
      SDL_GameControllerClose(c);
      return true;
    });
  }
};

Application::Application(ApplicationOptions options, std::shared_ptr<ApplicationDelegate> delegate)
    : options_(std::move(options)),
      delegate_(std::move(delegate)),
      owned_(std::make_unique<OwnedServices>(options_)),
      services_(owned_->services()) {
  init();
}

Application::Application(ApplicationOptions options, std::shared_ptr<ApplicationDelegate> delegate,
                         const Services& services)
    : options_(std::move(options)), delegate_(std::move(delegate)), services_(services) {
  init();
}

void Application::init() {
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
  controllers_.reset();
  renderer_.reset();
  renderWindow_.reset();
}

void Application::registerViewControllerClass(std::string name,
                                              InterfaceLayout::ControllerFactory factory) {
  classes_[std::move(name)] = std::move(factory);
}

bool Application::launch(std::string* error) {
  if (launched_)
    return true;
  const std::filesystem::path file = options_.layoutFile.empty()
                                         ? options_.resourceDir / "layout" / "main.json"
                                         : options_.layoutFile;
  std::optional<InterfaceLayout> layout = InterfaceLayout::load(file, error);
  if (!layout)
    return false;
  const DeviceProfile* named = layout->profile(options_.profile);
  if (!named) {
    if (error)
      *error = "unknown device profile \"" + options_.profile + "\"";
    return false;
  }
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
    w.renderer = options_.renderer;
    std::string why;
    renderWindow_ = RenderWindow::open(w, &why);
    if (!renderWindow_) {
      if (error)
        *error = why;
      return false;
    }
    services_.log.write("Drawing with SDL's " + renderWindow_->rendererName() +
                        " renderer, vsync " + (renderWindow_->vsync() ? "on" : "off"));
    const Bundle& bundle = services_.bundle;
    renderer_ = std::make_unique<Renderer>(
        renderWindow_->sdlRenderer(),
        [&bundle](std::string_view name) { return bundle.pathForImage(name); }, services_.log);
    if (SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) == 0) {
      controllers_ = std::make_unique<Controllers>();
    }
  }

  services_.device.userInterfaceIdiom = profile.idiom;
  instance_ = layout->instantiate(profile, classes_, error);
  if (!instance_)
    return false;
  updateScreen();

  delegate_->setWindow(instance_->window);
  delegate_->applicationDidFinishLaunchingWithOptions(*this, {});
  instance_->install();
  syncScene();
  launched_ = true;
  delegate_->applicationDidBecomeActive(*this);
  return true;
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
  if (renderWindow_)
    return renderWindow_->viewport();
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
  if (renderWindow_) {
    const double scale = renderWindow_->viewport().pixelsPerPoint();
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
  if (renderWindow_)
    pacer.setRefreshRate(renderWindow_->refreshRate());
  uint64_t frames = 0;
  while (!quitRequested_) {
    if (renderWindow_ && !renderWindow_->isVisible()) {
      // Minimised: nothing to draw and nothing runs (as a sprite view in the
      // background); sleep until the window says something.
      SDL_WaitEventTimeout(nullptr, 250);
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
  if (renderWindow_ && renderWindow_->isVisible()) {
    renderer_->drawFrame(*instance_->window, renderWindow_->viewport(),
                         services_.clock.monotonicNanos());
    const auto beforePresent = std::chrono::steady_clock::now();
    renderWindow_->present();
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
  if (!renderWindow_)
    return;
  std::vector<Point> touches;
  bool left = false, right = false, primary = false;
  const Viewport vp = renderWindow_->viewport();
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
  SDL_Event e;
  while (SDL_PollEvent(&e)) {
    switch (e.type) {
      case SDL_QUIT:
        quit();
        break;
      case SDL_WINDOWEVENT:
        switch (e.window.event) {
          case SDL_WINDOWEVENT_CLOSE:
            quit();
            break;
          case SDL_WINDOWEVENT_FOCUS_GAINED:
            windowFocusChanged(true);
            break;
          case SDL_WINDOWEVENT_FOCUS_LOST:
            windowFocusChanged(false);
            break;
          case SDL_WINDOWEVENT_MINIMIZED:
          case SDL_WINDOWEVENT_HIDDEN:
            windowVisibilityChanged(false);
            break;
          case SDL_WINDOWEVENT_RESTORED:
          case SDL_WINDOWEVENT_SHOWN:
          case SDL_WINDOWEVENT_MAXIMIZED:
            windowVisibilityChanged(true);
            break;
          case SDL_WINDOWEVENT_SIZE_CHANGED:
          case SDL_WINDOWEVENT_DISPLAY_CHANGED:
            updateScreen();
            break;
          default:
            break;
        }
        break;
      case SDL_MOUSEBUTTONDOWN:
        // Touch screens also report their taps as mouse clicks; those come
        // through as fingers.
        if (e.button.which != SDL_TOUCH_MOUSEID && e.button.button == SDL_BUTTON_LEFT) {
          touches.push_back(vp.pointFromWindow({double(e.button.x), double(e.button.y)}));
        }
        break;
      case SDL_FINGERDOWN:
        if (e.tfinger.touchId != SDL_MOUSE_TOUCHID) {
          const Size win = renderWindow_->windowSize();
          touches.push_back(
              vp.pointFromWindow({e.tfinger.x * win.width, e.tfinger.y * win.height}));
        }
        break;
      case SDL_KEYDOWN:
        if (e.key.repeat || offerKey(keyForPanel(e.key.keysym.sym, e.key.keysym.mod)))
          break;
        act(actionForKey(e.key.keysym.sym, e.key.keysym.mod));
        break;
      case SDL_CONTROLLERDEVICEADDED:
        if (controllers_)
          controllers_->added(e.cdevice.which);
        break;
      case SDL_CONTROLLERDEVICEREMOVED:
        if (controllers_)
          controllers_->removed(e.cdevice.which);
        break;
      case SDL_CONTROLLERBUTTONDOWN:
        if (offerKey(keyForPanelFromController(e.cbutton.button)))
          break;
        act(actionForControllerButton(e.cbutton.button));
        break;
      default:
        break;
    }
  }
  if (!touches.empty())
    touchesBegan(touches);
  if (left || right)
    tapHalves(left, right);
  if (primary)
    pressPrimary();
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
  if (!renderWindow_)
    return;
  renderWindow_->setFullscreen(!renderWindow_->isFullscreen());
  updateScreen();
}

bool Application::saveScreenshot(const std::filesystem::path& file, std::string* error) {
  if (!renderWindow_ || !instance_) {
    if (error)
      *error = "no window to take a screenshot of";
    return false;
  }
  renderer_->drawFrame(*instance_->window, renderWindow_->viewport(),
                       services_.clock.monotonicNanos());
  return renderWindow_->saveScreenshot(file, error);
}

}  // namespace kit
