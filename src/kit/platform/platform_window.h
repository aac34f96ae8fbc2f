#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "kit/foundation/geometry.h"
#include "kit/foundation/result.h"
#include "kit/platform/event_source.h"
#include "kit/platform/image_codec.h"
#include "kit/platform/render_target.h"
#include "kit/platform/renderer_choice.h"
#include "kit/render/viewport.h"

namespace kit {

struct WindowOptions {
  std::string title = "Twin Lanes";
  Size content{320, 568};      // points
  double scale = 0;            // window coordinates per point; 0 fits the desktop
  bool fullscreen = false;     // desktop fullscreen
  std::filesystem::path icon;  // a PNG; none when empty or unreadable
  RendererChoice renderer = RendererChoice::Auto;
};

// The one window (or canvas) the application draws into and takes its input
// from: a render target and an event source with the facts the frame loop
// needs. Made by the backend's WindowSystem, owned by the application. Main
// thread only.
class PlatformWindow : public RenderTarget, public EventSource {
 public:
  // The content fitted into the window as it is now (points to pixels).
  virtual Viewport viewport() const = 0;
  // The display's refresh rate in hertz, 0 when unknown.
  virtual int refreshRate() const = 0;
  // The name of what draws ("opengl", "software", "canvas", ...) and whether
  // the platform granted vsync, as it reports it.
  virtual std::string rendererName() const = 0;
  virtual bool vsync() const = 0;
  // False while minimised or hidden: nothing there to draw.
  virtual bool isVisible() const = 0;
  virtual bool isFullscreen() const = 0;
  virtual void setFullscreen(bool on) = 0;
  // Sleeps until an event arrives or `timeoutMs` pass (a minimised window's
  // loop); a backend driven by the browser's frames returns at once.
  virtual void waitForEvents(int timeoutMs) = 0;
  // Saves the drawn pixels (before present) as a PNG.
  [[nodiscard]] virtual Status saveScreenshot(const std::filesystem::path& file) const = 0;
};

// Opens windows: what the application needs from a backend to be seen (its
// images come from the graphics' image system). Owned by the composition
// root (the program's main); borrowed by the application, outliving it.
class WindowSystem {
 public:
  virtual ~WindowSystem() = default;
  // A one-line reason when there is no display or no renderer.
  [[nodiscard]] virtual Result<std::unique_ptr<PlatformWindow>> open(
      const WindowOptions& options) = 0;
};

}  // namespace kit
