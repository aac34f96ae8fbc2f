#include "kit/backends/desktop/render_window.h"

#include <SDL.h>
#include <SDL_image.h>

#include <cmath>
#include <cstdlib>

#include "kit/backends/desktop/render_window_parts.h"

namespace kit {
namespace {

void fail(std::string* error, const std::string& what) {
  if (error)
    *error = what + ": " + SDL_GetError();
}

}  // namespace

void applyVideoHints(const std::string& appName) {
  SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
  SDL_SetHint(SDL_HINT_RENDER_DRIVER, "software");
  SDL_SetHint(SDL_HINT_TOUCH_MOUSE_EVENTS, "0");
  SDL_SetHint(SDL_HINT_MOUSE_TOUCH_EVENTS, "0");
  if (!appName.empty())
    SDL_SetHint(SDL_HINT_APP_NAME, appName.c_str());
  // Keep the desktop's compositor running and the screen saver usable.
  SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
}

namespace {

// Starts SDL's video on a real display. SDL falls back to its invisible
// offscreen driver when no display answers; that only counts when asked for
// by name (tests, screenshots on a server). Without a display named in the
// environment nothing is tried: the probes of the display libraries would
// only print their own complaints (a console can still ask for kmsdrm).
//
// Once started, video stays up for the life of the process: SDL 2.26's X11
// driver cannot start a second time (after a quit, SDL silently falls back to
// the offscreen driver), so the probe, every window and every relaunch share
// the one start. A driver asked for later that is not the running one is
// reported as missing, as it would be on a first start.
bool startVideo(std::string* error) {
  static bool started = false;
  const char* asked = SDL_GetHint(SDL_HINT_VIDEODRIVER);
  if (started) {
    const char* running = SDL_GetCurrentVideoDriver();
    if (asked && *asked && running && std::string(asked).find(running) == std::string::npos) {
      if (error)
        *error = std::string("the video driver \"") + asked + "\" is not available";
      return false;
    }
    return true;
  }
  if ((!asked || !*asked) && !std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
    if (error)
      *error = "neither DISPLAY nor WAYLAND_DISPLAY is set";
    return false;
  }
  SDL_ClearError();
  if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
    if (error)
      *error = SDL_GetError();
    return false;
  }
  const std::string driver = SDL_GetCurrentVideoDriver() ? SDL_GetCurrentVideoDriver() : "";
  const bool invisible = driver == "offscreen" || driver == "dummy";
  if (invisible && (!asked || std::string(asked).find(driver) == std::string::npos)) {
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    if (error)
      *error = "no X11 or Wayland display answered";
    return false;
  }
  started = true;
  return true;
}

}  // namespace

bool RenderWindow::displayAvailable(std::string* error) {
  applyVideoHints("");
  return startVideo(error);
}

std::unique_ptr<RenderWindow> RenderWindow::open(const WindowOptions& options, std::string* error) {
  applyVideoHints(options.title);
  std::string why;
  if (!startVideo(&why)) {
    if (error)
      *error = "no display available: " + why;
    return nullptr;
  }
  // Events still queued belong to windows that are gone (SDL's queue is the
  // process's): a new window starts with none.
  SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
  std::unique_ptr<RenderWindow> w(new RenderWindow());
  w->content_ = options.content;

  double scale = options.scale;
  if (!(scale > 0) || !std::isfinite(scale)) {
    SDL_Rect usable{0, 0, 1024, 768};
    if (SDL_GetDisplayUsableBounds(0, &usable) != 0)
      SDL_GetDisplayBounds(0, &usable);
    scale = openingScale(options.content, {double(usable.w), double(usable.h)}, kDesktopMargin);
  }
  const int width = std::max(1, static_cast<int>(std::lround(options.content.width * scale)));
  const int height = std::max(1, static_cast<int>(std::lround(options.content.height * scale)));
  Uint32 flags = SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI | SDL_WINDOW_HIDDEN;
  if (options.fullscreen)
    flags |= SDL_WINDOW_FULLSCREEN_DESKTOP;
  w->window_ = SDL_CreateWindow(options.title.c_str(), SDL_WINDOWPOS_CENTERED,
                                SDL_WINDOWPOS_CENTERED, width, height, flags);
  if (!w->window_) {
    fail(error, "cannot open a window");
    return nullptr;
  }
  SDL_SetWindowMinimumSize(w->window_, std::max(1, width / 4), std::max(1, height / 4));
  if (!options.icon.empty()) {
    if (SDL_Surface* icon = IMG_Load(options.icon.c_str())) {
      SDL_SetWindowIcon(w->window_, icon);
      SDL_FreeSurface(icon);
    }
  }
  w->renderer_ =
      SDL_CreateRenderer(w->window_, -1, SDL_RENDERER_SOFTWARE | SDL_RENDERER_PRESENTVSYNC);
  if (!w->renderer_)
    w->renderer_ = SDL_CreateRenderer(w->window_, -1, SDL_RENDERER_SOFTWARE);
  if (!w->renderer_) {
    fail(error, "cannot create a renderer");
    return nullptr;
  }
  SDL_SetRenderDrawBlendMode(w->renderer_, SDL_BLENDMODE_BLEND);
  SDL_ShowWindow(w->window_);
  if (SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) == 0)
    w->controllers_ = std::make_unique<Controllers>();
  return w;
}

RenderWindow::~RenderWindow() {
  // Textures and controllers go before the renderer and the window.
  textures_.reset();
  controllers_.reset();
  if (renderer_)
    SDL_DestroyRenderer(renderer_);
  if (window_)
    SDL_DestroyWindow(window_);
}

void RenderWindow::waitForEvents(int timeoutMs) {
  SDL_WaitEventTimeout(nullptr, timeoutMs);
}

uint32_t RenderWindow::windowId() const {
  return SDL_GetWindowID(window_);
}

Size RenderWindow::windowSize() const {
  int w = 0, h = 0;
  SDL_GetWindowSize(window_, &w, &h);
  return {double(w), double(h)};
}

Viewport RenderWindow::viewport() const {
  const Size win = windowSize(), px = pixelSize();
  const double density = win.width > 0 ? px.width / win.width : 1;
  return Viewport::fit(content_, win, density);
}

int RenderWindow::refreshRate() const {
  SDL_DisplayMode mode;
  const int display = SDL_GetWindowDisplayIndex(window_);
  if (SDL_GetCurrentDisplayMode(display < 0 ? 0 : display, &mode) != 0)
    return 0;
  return mode.refresh_rate;
}

bool RenderWindow::isVisible() const {
  const Uint32 flags = SDL_GetWindowFlags(window_);
  return (flags & SDL_WINDOW_SHOWN) && !(flags & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_HIDDEN));
}

bool RenderWindow::isFullscreen() const {
  return (SDL_GetWindowFlags(window_) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
}

void RenderWindow::setFullscreen(bool on) {
  SDL_SetWindowFullscreen(window_, on ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
}

Status RenderWindow::saveScreenshot(const std::filesystem::path& file) const {
  int w = 0, h = 0;
  Result<std::vector<uint8_t>> read = readPixels(w, h);
  if (!read)
    return Error{read.error()};
  std::vector<uint8_t>& rgba = *read;
  // Screenshots are opaque, as the screen is.
  for (size_t i = 3; i < rgba.size(); i += 4)
    rgba[i] = 255;
  SDL_Surface* surface =
      SDL_CreateRGBSurfaceWithFormatFrom(rgba.data(), w, h, 32, w * 4, SDL_PIXELFORMAT_RGBA32);
  if (!surface)
    return Error{std::string("cannot make a surface: ") + SDL_GetError()};
  const bool ok = IMG_SavePNG(surface, file.c_str()) == 0;
  SDL_FreeSurface(surface);
  if (!ok)
    return Error{"cannot write " + file.string() + ": " + SDL_GetError()};
  return {};
}

}  // namespace kit
