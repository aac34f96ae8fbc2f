#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/foundation/services.h"
#include "kit/foundation/value.h"
#include "kit/platform/platform_window.h"
#include "kit/platform/renderer_choice.h"
#include "kit/render/interface_layout.h"
#include "kit/render/lifecycle.h"
#include "kit/render/viewport.h"
#include "kit/ui/screen.h"

namespace kit {

class Animator;
class Application;
class FrameDriver;
class Renderer;
class SpriteView;
class View;
class Window;

// The application's delegate (the platform's application delegate): the
// lifecycle calls, all optional, and the window the interface layout made,
// which the delegate holds (strong) from launch on.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  const std::shared_ptr<Window>& window() const { return window_; }
  void setWindow(std::shared_ptr<Window> window) { window_ = std::move(window); }

  virtual bool applicationDidFinishLaunchingWithOptions(Application& /*application*/,
                                                        const Value::Dictionary& /*options*/) {
    return true;
  }
  virtual void applicationWillResignActive(Application& /*application*/) {}
  virtual void applicationDidEnterBackground(Application& /*application*/) {}
  virtual void applicationWillEnterForeground(Application& /*application*/) {}
  virtual void applicationDidBecomeActive(Application& /*application*/) {}
  virtual void applicationWillTerminate(Application& /*application*/) {}

 private:
  std::shared_ptr<Window> window_;
};

struct ApplicationOptions {
  std::string title = "Twin Lanes";
  std::string profile = "phone";  // a device profile of the layout (the bundle's layout/main.json)
  std::optional<Size> sceneSize;  // replaces the profile's scene size
  bool window = true;             // false: no window at all (headless)
  bool fullscreen = false;
  double windowScale = 0;      // window coordinates per point; 0 fits the desktop
  std::filesystem::path icon;  // the window's icon (PNG)
  RendererChoice renderer = RendererChoice::Auto;
};

// The application object (the platform's shared application). It borrows the
// services and the backend's window system, and owns the platform window it
// opens, the interface layout's window and controllers, the frame driver of
// the layout's sprite view, the view animator, and the frame cycle: the
// window's events (touches, keys, pad buttons) become touches routed through
// the view tree, lifecycle events reach the delegate, and every frame is
// drawn into the window. Headless (no window), it runs the same objects and
// draws nothing. While it lives, the services' graphics are installed as
// Graphics::current() (the one installed before comes back after). Main
// thread only.
//
// With TWINLANES_STARTUP_TRACE set in the environment, the first presented
// frame is logged with its steady-clock time (for startup measurements).
class Application {
 public:
  // The services and the window system are borrowed and outlive the
  // application; without a window system only headless runs launch.
  Application(ApplicationOptions options, std::shared_ptr<ApplicationDelegate> delegate,
              const Services& services, WindowSystem* windows);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // Classes of view controllers the layout may name, besides the built-in
  // NavigationController. Register before launch.
  void registerViewControllerClass(std::string name, InterfaceLayout::ControllerFactory factory);

  // Loads the layout, opens the window (unless headless), hands the window
  // to the delegate, sends applicationDidFinishLaunchingWithOptions, puts the
  // root controller on screen (its viewDidLoad runs) and sends
  // applicationDidBecomeActive. False with a one-line reason when there is
  // no display or no usable layout; nothing else is wrong then.
  [[nodiscard]] Status launch();

  // The main loop, after launch: one frame per display refresh (paced when
  // presenting does not wait), idle while the window is minimised, until
  // quit(), Escape or the window's close button; then terminate(). Returns
  // the process's exit status. `frameLimit` stops it after that many frames.
  // A backend whose frames come from the platform (the browser) calls
  // runFrame() from its frame callback instead.
  int run(std::optional<uint64_t> frameLimit = std::nullopt);
  // One pass of the loop without pacing: window events and input, the frame
  // (touches, timers, update, actions, physics), the view animations, drawing.
  void runFrame();
  // The second half of a frame, for drivers that run the frame driver
  // themselves: view animations, then drawing and presenting.
  void finishFrame();
  // Reads the window's events and queues the input they carry (also done by
  // runFrame).
  void pollEvents();
  void quit() { quitRequested_ = true; }
  bool quitRequested() const { return quitRequested_; }
  // applicationWillTerminate, then the preferences are written. Once.
  void terminate();

  // --- Input, as a player gives it ---------------------------------------------
  //
  // Touches are in window points (the view tree's coordinates). Each call is
  // one event: fingers that landed together. Each touch goes to the topmost
  // view under it: the sprite view passes it to its scene (in scene points,
  // all of the event's scene touches as one event), a TouchReceiver handles
  // it, any other view swallows it.
  void touchesBegan(const std::vector<Point>& windowPoints);
  // Where a scene point lies in the window; nothing before a scene is shown.
  std::optional<Point> windowPointOfScene(Point scenePoint) const;
  // The view that takes a touch at this scene point instead of the scene (the
  // topmost view there that handles or swallows it); null when the scene gets it.
  std::shared_ptr<View> viewCoveringScene(Point scenePoint);
  // A tap on the left half, the right half or both (one event), for keys.
  // Nothing happens while another view covers the scene there.
  void tapHalves(bool left, bool right);
  // The visible primary button (play, play again), through the hook.
  void pressPrimary();
  // Answers where the primary button is, in scene points, or nothing when
  // none is up. Set by the host, which knows its scene.
  using PrimaryButtonHook = std::function<std::optional<Point>()>;
  void setPrimaryButtonHook(PrimaryButtonHook hook) { primaryHook_ = std::move(hook); }

  // Called at the start of each frame's run, after the input is queued and
  // before the frame driver runs (a built-in player taps here).
  void setFrameHook(std::function<void()> hook) { frameHook_ = std::move(hook); }

  // --- Lifecycle reports (from the window, or from tests) ---------------------------
  void windowFocusChanged(bool focused);
  void windowVisibilityChanged(bool visible);
  const Lifecycle& lifecycle() const { return lifecycle_; }

  // --- Screen -----------------------------------------------------------------
  bool hasWindow() const { return platformWindow_ != nullptr; }
  void toggleFullscreen();
  // Draws the current state and saves it as a PNG (needs a window).
  [[nodiscard]] Status saveScreenshot(const std::filesystem::path& file);
  // Where the content lands in the window; a 1:1 mapping headless.
  Viewport viewport() const;
  PlatformWindow* platformWindow() const { return platformWindow_.get(); }
  Renderer* renderer() const { return renderer_.get(); }

  // --- What the application holds -----------------------------------------------
  const Services& services() const { return services_; }
  const ApplicationOptions& options() const { return options_; }
  const std::shared_ptr<ApplicationDelegate>& delegate() const { return delegate_; }
  const DeviceProfile& profile() const { return instance_->profile; }
  // Null before launch.
  std::shared_ptr<Window> window() const;
  std::shared_ptr<SpriteView> spriteView() const;
  FrameDriver& frameDriver();
  Animator& animator();

 private:
  void send(const std::vector<Lifecycle::Call>& calls);
  void syncScene();
  void updateScreen();
  void handle(const PlatformEvent& event, std::vector<Point>& touches, bool& left, bool& right,
              bool& primary);
  bool sceneCoveredAt(Point scenePoint);

  ApplicationOptions options_;
  std::shared_ptr<ApplicationDelegate> delegate_;
  Screen screen_;  // the main screen while the application lives
  Services services_;
  WindowSystem* windows_;
  Graphics* graphicsBefore_ = nullptr;  // installed again when the application ends
  std::unique_ptr<FrameDriver> frameDriver_;
  std::unique_ptr<Animator> animator_;
  InterfaceLayout::ControllerClasses classes_;
  std::optional<InterfaceLayout::Instance> instance_;
  std::unique_ptr<PlatformWindow> platformWindow_;
  std::unique_ptr<Renderer> renderer_;
  std::vector<PlatformEvent> events_;
  Lifecycle lifecycle_;
  PrimaryButtonHook primaryHook_;
  std::function<void()> frameHook_;
  bool launched_ = false;
  bool presented_ = false;
  int64_t lastPresentNanos_ = 0;
  bool terminated_ = false;
  bool quitRequested_ = false;
};

}  // namespace kit
