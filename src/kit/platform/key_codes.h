#pragma once

#include <cstdint>

namespace kit {

// Keys and pad buttons in portable terms: the ones the application gives a
// meaning to. Backends translate their own codes (SDL keycodes, DOM
// KeyboardEvent.key) into these; everything else arrives as Other.
enum class PlatformKey : int32_t {
  Other = 0,
  Left,
  Right,
  Up,
  Down,
  A,
  D,
  L,
  Space,
  Return,
  KeypadEnter,
  Escape,
  Tab,
  F11,
};

// Modifier bits of a key event.
inline constexpr uint16_t kModShift = 1 << 0;
inline constexpr uint16_t kModAlt = 1 << 1;

enum class PadButton : int {
  Other = 0,
  A,
  B,
  Start,
  DpadLeft,
  DpadRight,
  DpadUp,
  DpadDown,
  LeftShoulder,
  RightShoulder,
};

}  // namespace kit
