#include <SDL.h>

#include <algorithm>

#include "kit/backends/desktop/render_window.h"
#include "kit/backends/desktop/render_window_parts.h"
#include "kit/backends/desktop/sdl_keys.h"

namespace kit {

RenderWindow::Controllers::~Controllers() {
  for (SDL_GameController* c : open)
    SDL_GameControllerClose(c);
  SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
}

void RenderWindow::Controllers::added(int deviceIndex) {
  if (!SDL_IsGameController(deviceIndex))
    return;
  if (SDL_GameController* c = SDL_GameControllerOpen(deviceIndex))
    open.push_back(c);
}

void RenderWindow::Controllers::removed(SDL_JoystickID id) {
  std::erase_if(open, [id](SDL_GameController* c) {
    if (SDL_JoystickInstanceID(SDL_GameControllerGetJoystick(c)) != id)
      return false;
    SDL_GameControllerClose(c);
    return true;
  });
}

void RenderWindow::poll(std::vector<PlatformEvent>& out) {
  using Window = PlatformEvent::Window;
  auto window = [&out](Window what) { out.push_back({PlatformEvent::WindowEvent{what}}); };
  auto touch = [&out](Point p) { out.push_back({PlatformEvent::TouchesBegan{{p}}}); };
  const Viewport vp = viewport();
  SDL_Event e;
  while (SDL_PollEvent(&e)) {
    switch (e.type) {
      case SDL_QUIT:
        out.push_back({PlatformEvent::Quit{}});
        break;
      case SDL_WINDOWEVENT:
        switch (e.window.event) {
          case SDL_WINDOWEVENT_CLOSE:
            window(Window::Close);
            break;
          case SDL_WINDOWEVENT_FOCUS_GAINED:
            window(Window::FocusGained);
            break;
          case SDL_WINDOWEVENT_FOCUS_LOST:
            window(Window::FocusLost);
            break;
          case SDL_WINDOWEVENT_MINIMIZED:
          case SDL_WINDOWEVENT_HIDDEN:
            window(Window::Hidden);
            break;
          case SDL_WINDOWEVENT_RESTORED:
          case SDL_WINDOWEVENT_SHOWN:
          case SDL_WINDOWEVENT_MAXIMIZED:
            window(Window::Shown);
            break;
          case SDL_WINDOWEVENT_SIZE_CHANGED:
          case SDL_WINDOWEVENT_DISPLAY_CHANGED:
            window(Window::Resized);
            break;
          default:
            break;
        }
        break;
      case SDL_MOUSEBUTTONDOWN:
        // Touch screens also report their taps as mouse clicks; those come
        // through as fingers.
        if (e.button.which != SDL_TOUCH_MOUSEID && e.button.button == SDL_BUTTON_LEFT)
          touch(vp.pointFromWindow({double(e.button.x), double(e.button.y)}));
        break;
      case SDL_FINGERDOWN:
        if (e.tfinger.touchId != SDL_MOUSE_TOUCHID) {
          const Size win = windowSize();
          touch(vp.pointFromWindow({e.tfinger.x * win.width, e.tfinger.y * win.height}));
        }
        break;
      case SDL_KEYDOWN:
        if (!e.key.repeat) {
          out.push_back({PlatformEvent::KeyDown{platformKeyFromSdl(e.key.keysym.sym),
                                                modifiersFromSdl(e.key.keysym.mod)}});
        }
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
        out.push_back({PlatformEvent::PadPressed{padButtonFromSdl(e.cbutton.button)}});
        break;
      default:
        break;
    }
  }
}

}  // namespace kit
