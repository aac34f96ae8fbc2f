#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/platform/platform_window.h"

struct SDL_Renderer;
struct SDL_Window;
struct SDL_Texture;

namespace kit {

// One desktop window with SDL's software renderer (the same pixels on every
// video driver: x11, wayland, offscreen, dummy), drawn at the drawable's full
// pixel density, resizable, with vsync requested. Owns the SDL window and
// renderer, the textures made through it, the open game controllers, and
// SDL's video subsystem while it lives. The desktop's PlatformWindow: its
// render target is the SDL renderer and its events come from SDL's queue.
// Main thread only.
class RenderWindow final : public PlatformWindow {
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
  ~RenderWindow() override;
  RenderWindow(const RenderWindow&) = delete;
  RenderWindow& operator=(const RenderWindow&) = delete;

  SDL_Window* sdlWindow() const { return window_; }
  SDL_Renderer* sdlRenderer() const { return renderer_; }
  uint32_t windowId() const;

  Size content() const { return content_; }
  // Window coordinates (what mouse events use).
  Size windowSize() const;

  // --- PlatformWindow ---------------------------------------------------------------
  Viewport viewport() const override;
  int refreshRate() const override;
  bool isVisible() const override;
  bool isFullscreen() const override;
  void setFullscreen(bool on) override;
  void waitForEvents(int timeoutMs) override;
  Status saveScreenshot(const std::filesystem::path& file) const override;

  // --- RenderTarget (render_window_target.cpp) ----------------------------------------
  Size pixelSize() const override;
  TextureId createTexture(const uint8_t* rgba, int width, int height) override;
  void destroyTexture(TextureId texture) override;
  void clear(const Color& color) override;
  void fillRect(const Rect& rect, const Color& color, TargetBlend blend) override;
  void drawQuad(const TexturedQuad& quad) override;
  void setClip(const std::optional<Rect>& rect) override;
  void present() override;
  Result<std::vector<uint8_t>> readPixels(int& width, int& height) const override;

  // --- EventSource (render_window_events.cpp) --------------------------------------------
  // Also opens and closes game controllers as they come and go.
  void poll(std::vector<PlatformEvent>& out) override;

 private:
  struct Textures;
  struct Controllers;

  RenderWindow();

  SDL_Window* window_ = nullptr;
  SDL_Renderer* renderer_ = nullptr;
  Size content_;
  std::unique_ptr<Textures> textures_;
  std::unique_ptr<Controllers> controllers_;
};

// Sets the hints every SDL window of the program wants, before SDL starts
// video: no GPU texture behind the software renderer (slow to start, no
// gain), no mouse events made from touches or touches made from the mouse
// (both are handled as they are), and the application's name.
void applyVideoHints(const std::string& appName);

}  // namespace kit
