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

std::optional<Key> keyForPanel(int32_t keycode, uint16_t modifiers) {
  switch (keycode) {
    case SDLK_ESCAPE:
      return Key::Escape;
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
      if (modifiers & KMOD_ALT)
        return std::nullopt;
      return Key::Return;
    case SDLK_TAB:
      return (modifiers & KMOD_SHIFT) ? Key::BackTab : Key::Tab;
    case SDLK_LEFT:
      return Key::Left;
    case SDLK_RIGHT:
      return Key::Right;
    case SDLK_UP:
      return Key::Up;
    case SDLK_DOWN:
      return Key::Down;
    default:
      return std::nullopt;
  }
}

std::optional<Key> keyForPanelFromController(int button) {
  switch (button) {
    case SDL_CONTROLLER_BUTTON_A:
      return Key::Return;
    case SDL_CONTROLLER_BUTTON_B:
      return Key::Escape;
    case SDL_CONTROLLER_BUTTON_DPAD_LEFT:
      return Key::Left;
    case SDL_CONTROLLER_BUTTON_DPAD_RIGHT:
      return Key::Right;
    case SDL_CONTROLLER_BUTTON_DPAD_UP:
      return Key::Up;
    case SDL_CONTROLLER_BUTTON_DPAD_DOWN:
      return Key::Down;
    default:
      return std::nullopt;
  }
}

}  // namespace kit
