#pragma once

#include <cstdint>

#include "kit/platform/key_codes.h"

namespace kit {

// SDL's key codes, modifiers and game controller buttons in portable terms.
PlatformKey platformKeyFromSdl(int32_t keycode);
uint16_t modifiersFromSdl(uint16_t sdlModifiers);
PadButton padButtonFromSdl(int button);

}  // namespace kit
