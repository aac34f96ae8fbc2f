#pragma once

#include <memory>

#include "kit/backends/web/browser_events.h"
#include "kit/backends/web/canvas_target.h"
#include "kit/backends/web/page_layout.h"
#include "kit/platform/platform_window.h"

namespace kit::web {

// The page's canvas as the application's window: letterboxed in the browser's
// viewport (PageLayout), drawn with Canvas 2D (CanvasTarget), its input and
// lifecycle from the page (BrowserEvents). Window coordinates are the
// canvas's CSS pixels. A page is always "fullscreen" in its tab and never
// waits for events: the browser drives frames. Main thread only.
class WebWindow final : public PlatformWindow {
 public:
  explicit WebWindow(Size content);

  // The render target: the canvas.
  Size pixelSize() const override { return target_.pixelSize(); }
  TextureId createTexture(const uint8_t* rgba, int width, int height) override {
    return target_.createTexture(rgba, width, height);
  }
  void destroyTexture(TextureId texture) override { target_.destroyTexture(texture); }
  void clear(const Color& color) override { target_.clear(color); }
  void fillRect(const Rect& rect, const Color& color, TargetBlend blend) override {
    target_.fillRect(rect, color, blend);
  }
  void drawQuad(const TexturedQuad& quad) override { target_.drawQuad(quad); }
  void setClip(const std::optional<Rect>& rect) override { target_.setClip(rect); }
  void present() override { target_.present(); }
  Result<std::vector<uint8_t>> readPixels(int& width, int& height) const override {
    return target_.readPixels(width, height);
  }

  // The event source: the page's listeners.
  void poll(std::vector<PlatformEvent>& out) override { events_.poll(out); }

  Viewport viewport() const override;
  int refreshRate() const override { return 60; }
  // Canvas 2D, paced by the browser's animation frames: always in step with
  // the display.
  std::string rendererName() const override { return "canvas"; }
  bool vsync() const override { return true; }
  bool isVisible() const override;
  bool isFullscreen() const override { return true; }
  void setFullscreen(bool) override {}
  void waitForEvents(int) override {}
  Status saveScreenshot(const std::filesystem::path& file) const override;

  BrowserEvents& events() { return events_; }

 private:
  PageLayout layout_;
  CanvasTarget target_;
  BrowserEvents events_;
};

// Opens the page's one window (a second open() is refused).
class WebWindowSystem final : public WindowSystem {
 public:
  Result<std::unique_ptr<PlatformWindow>> open(const WindowOptions& options) override;
  // The window open() made, while the application holds it; null before.
  WebWindow* window() const { return window_; }

 private:
  WebWindow* window_ = nullptr;
};

}  // namespace kit::web
