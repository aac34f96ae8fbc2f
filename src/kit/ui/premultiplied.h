#pragma once

#include <cstdint>

namespace kit {

// Pixel arithmetic for backends whose drawing library keeps premultiplied
// pixels, while the kit hands textures and pixel reads straight RGBA.

// One premultiplied 8-bit channel under `alpha` (1 to 255) made straight,
// rounded to nearest.
uint8_t unpremultiplied(uint32_t channel, uint32_t alpha);

// Turns premultiplied ARGB32 (native-endian words, alpha in the top byte)
// into straight RGBA bytes; fully transparent pixels become zero. `stride` is
// in bytes, the output tightly packed.
void unpremultiply(const uint8_t* argb, int width, int height, int stride, uint8_t* rgbaOut);

}  // namespace kit
