#pragma once

#include <cstdint>
#include <optional>

#include "kit/platform/key_codes.h"
#include "kit/ui/key_receiver.h"

namespace kit {

// What a key or a game-controller button means to the application, for
// players without a mouse or a touch screen: a tap on the left or the right
// half of the scene, the visible primary button, and the window's own keys.
enum class InputAction {
  None,
  TapLeft,           // Left, A; d-pad left, left shoulder
  TapRight,          // Right, D, L; d-pad right, right shoulder
  Primary,           // Space, Enter; controller A, Start
  Quit,              // Escape
  ToggleFullscreen,  // F11, Alt+Enter
};

// `modifiers` are the kMod bits of kit/platform/key_codes.h.
InputAction actionForKey(PlatformKey key, uint16_t modifiers);
InputAction actionForControllerButton(PadButton button);

// What a key means to a modal panel that takes the keyboard, if anything:
// Escape, Return (and keypad Enter), Tab and Shift+Tab, the arrows. Alt+Enter
// stays the window's.
std::optional<Key> keyForPanel(PlatformKey key, uint16_t modifiers);
// The controller's buttons for a panel: A is Return, B is Escape, the d-pad
// moves.
std::optional<Key> keyForPanelFromController(PadButton button);

}  // namespace kit
