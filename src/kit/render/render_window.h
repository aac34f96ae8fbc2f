#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/render/renderer_choice.h"
#include "kit/render/viewport.h"

struct SDL_Renderer;
struct SDL_Window;

namespace kit {

struct WindowOptions {
  std::string title = "Twin Lanes";
  Size content{320, 568};      // points
  double scale = 0;            // window coordinates per point; 0 fits the desktop
  bool fullscreen = false;     // desktop fullscreen
  std::filesystem::path icon;  // a PNG; none when empty or unreadable
  RendererChoice renderer = RendererChoice::Auto;
};

// One desktop window with an SDL renderer chosen as WindowOptions::renderer
// says, drawn at the drawable's full pixel density, resizable, with vsync
// requested. Owns the SDL window and renderer, and SDL's video subsystem
// while it lives. Main thread only.
class RenderWindow {
 public:
  // The outer margin kept free around a window opened to fit the desktop.
  static constexpr double kDesktopMargin = 48;

  // Whether a window could be opened at all (SDL's video starts, and stays
  // started for the process), with SDL's reason when not. Cheap enough to ask
  // before anything else.
  static bool displayAvailable(std::string* error);

  // Opens the window, or returns nullptr and a one-line reason in `error`
  // (no display, no renderer). Never exits the process.
  static std::unique_ptr<RenderWindow> open(const WindowOptions& options, std::string* error);
  ~RenderWindow();
  RenderWindow(const RenderWindow&) = delete;
  RenderWindow& operator=(const RenderWindow&) = delete;

  SDL_Window* sdlWindow() const { return window_; }
  SDL_Renderer* sdlRenderer() const { return renderer_; }
  uint32_t windowId() const;
  // SDL's name of the renderer drawing ("opengl", "software", ...) and
  // whether the driver granted vsync.
  std::string rendererName() const;
  bool vsync() const;

  Size content() const { return content_; }
  // Window coordinates (what mouse events use) and drawable pixels.
  Size windowSize() const;
  Size pixelSize() const;
  // The content fitted into the window as it is now.
  Viewport viewport() const;
  // The display's refresh rate in hertz, 0 when unknown.
  int refreshRate() const;
  // False while minimised or hidden: nothing there to draw.
  bool isVisible() const;
  bool isFullscreen() const;
  void setFullscreen(bool on);

  // Shows what was drawn since the last present.
  void present();
  // The drawn pixels (before present), straight RGBA, rows top to bottom.
  std::vector<uint8_t> readPixels(int* width, int* height) const;
  // Saves the drawn pixels as a PNG; false with a reason on failure.
  bool saveScreenshot(const std::filesystem::path& file, std::string* error) const;

 private:
  RenderWindow() = default;

  SDL_Window* window_ = nullptr;
  SDL_Renderer* renderer_ = nullptr;
  Size content_;
};

// Sets the hints every SDL window of the program wants, before SDL starts
// video: no GPU texture behind the software renderer (slow to start, no
// gain when the software renderer is the choice), no mouse events made from touches or touches made
// from the mouse (both are handled as they are), and the application's name.
void applyVideoHints(const std::string& appName);

}  // namespace kit
