#include "kit/render/input_map.h"

#include <SDL.h>

namespace kit {

InputAction actionForKey(int32_t keycode, uint16_t modifiers) {
  const bool alt = (modifiers & KMOD_ALT) != 0;
  switch (keycode) {
    case SDLK_ESCAPE:
      return InputAction::Quit;
    case SDLK_F11:
      return InputAction::ToggleFullscreen;
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
      return alt ? InputAction::ToggleFullscreen : InputAction::Primary;
    case SDLK_SPACE:
      return InputAction::Primary;
    case SDLK_LEFT:
    case SDLK_a:
      return InputAction::TapLeft;
    case SDLK_RIGHT:
    case SDLK_d:
    case SDLK_l:
      return InputAction::TapRight;
    default:
      return InputAction::None;
  }
}

InputAction actionForControllerButton(int button) {
  switch (button) {
    case SDL_CONTROLLER_BUTTON_DPAD_LEFT:
    case SDL_CONTROLLER_BUTTON_LEFTSHOULDER:
      return InputAction::TapLeft;
    case SDL_CONTROLLER_BUTTON_DPAD_RIGHT:
    case SDL_CONTROLLER_BUTTON_RIGHTSHOULDER:
      return InputAction::TapRight;
    case SDL_CONTROLLER_BUTTON_A:
    case SDL_CONTROLLER_BUTTON_START:
      return InputAction::Primary;
    default:
      return InputAction::None;
  }
}

}  // namespace kit
