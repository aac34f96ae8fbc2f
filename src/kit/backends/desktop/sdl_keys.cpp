#include "kit/backends/desktop/sdl_keys.h"

#include <SDL.h>

namespace kit {

PlatformKey platformKeyFromSdl(int32_t keycode) {
  switch (keycode) {
    case SDLK_LEFT:
      return PlatformKey::Left;
    case SDLK_RIGHT:
      return PlatformKey::Right;
    case SDLK_UP:
      return PlatformKey::Up;
    case SDLK_DOWN:
      return PlatformKey::Down;
    case SDLK_a:
      return PlatformKey::A;
    case SDLK_d:
      return PlatformKey::D;
    case SDLK_l:
      return PlatformKey::L;
    case SDLK_SPACE:
      return PlatformKey::Space;
    case SDLK_RETURN:
      return PlatformKey::Return;
    case SDLK_KP_ENTER:
      return PlatformKey::KeypadEnter;
    case SDLK_ESCAPE:
      return PlatformKey::Escape;
    case SDLK_TAB:
      return PlatformKey::Tab;
    case SDLK_F11:
      return PlatformKey::F11;
    default:
      return PlatformKey::Other;
  }
}

uint16_t modifiersFromSdl(uint16_t sdlModifiers) {
  uint16_t bits = 0;
  if (sdlModifiers & KMOD_SHIFT)
    bits |= kModShift;
  if (sdlModifiers & KMOD_ALT)
    bits |= kModAlt;
  return bits;
}

PadButton padButtonFromSdl(int button) {
  switch (button) {
    case SDL_CONTROLLER_BUTTON_A:
      return PadButton::A;
    case SDL_CONTROLLER_BUTTON_B:
      return PadButton::B;
    case SDL_CONTROLLER_BUTTON_START:
      return PadButton::Start;
    case SDL_CONTROLLER_BUTTON_DPAD_LEFT:
      return PadButton::DpadLeft;
    case SDL_CONTROLLER_BUTTON_DPAD_RIGHT:
      return PadButton::DpadRight;
    case SDL_CONTROLLER_BUTTON_DPAD_UP:
      return PadButton::DpadUp;
    case SDL_CONTROLLER_BUTTON_DPAD_DOWN:
      return PadButton::DpadDown;
    case SDL_CONTROLLER_BUTTON_LEFTSHOULDER:
      return PadButton::LeftShoulder;
    case SDL_CONTROLLER_BUTTON_RIGHTSHOULDER:
      return PadButton::RightShoulder;
    default:
      return PadButton::Other;
  }
}

}  // namespace kit
