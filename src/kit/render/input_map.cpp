#include "kit/render/input_map.h"

namespace kit {

InputAction actionForKey(PlatformKey key, uint16_t modifiers) {
  const bool alt = (modifiers & kModAlt) != 0;
  switch (key) {
    case PlatformKey::Escape:
      return InputAction::Quit;
    case PlatformKey::F11:
      return InputAction::ToggleFullscreen;
    case PlatformKey::Return:
    case PlatformKey::KeypadEnter:
      return alt ? InputAction::ToggleFullscreen : InputAction::Primary;
    case PlatformKey::Space:
      return InputAction::Primary;
    case PlatformKey::Left:
    case PlatformKey::A:
      return InputAction::TapLeft;
    case PlatformKey::Right:
    case PlatformKey::D:
    case PlatformKey::L:
      return InputAction::TapRight;
    default:
      return InputAction::None;
  }
}

InputAction actionForControllerButton(PadButton button) {
  switch (button) {
    case PadButton::DpadLeft:
    case PadButton::LeftShoulder:
      return InputAction::TapLeft;
    case PadButton::DpadRight:
    case PadButton::RightShoulder:
      return InputAction::TapRight;
    case PadButton::A:
    case PadButton::Start:
      return InputAction::Primary;
    default:
      return InputAction::None;
  }
}

std::optional<Key> keyForPanel(PlatformKey key, uint16_t modifiers) {
  switch (key) {
    case PlatformKey::Escape:
      return Key::Escape;
    case PlatformKey::Return:
    case PlatformKey::KeypadEnter:
      if (modifiers & kModAlt)
        return std::nullopt;
      return Key::Return;
    case PlatformKey::Tab:
      return (modifiers & kModShift) ? Key::BackTab : Key::Tab;
    case PlatformKey::Left:
      return Key::Left;
    case PlatformKey::Right:
      return Key::Right;
    case PlatformKey::Up:
      return Key::Up;
    case PlatformKey::Down:
      return Key::Down;
    default:
      return std::nullopt;
  }
}

std::optional<Key> keyForPanelFromController(PadButton button) {
  switch (button) {
    case PadButton::A:
      return Key::Return;
    case PadButton::B:
      return Key::Escape;
    case PadButton::DpadLeft:
      return Key::Left;
    case PadButton::DpadRight:
      return Key::Right;
    case PadButton::DpadUp:
      return Key::Up;
    case PadButton::DpadDown:
      return Key::Down;
    default:
      return std::nullopt;
  }
}

}  // namespace kit
