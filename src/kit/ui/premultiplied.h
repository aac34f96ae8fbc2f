#pragma once

#include <cstddef>
#include <cstdint>

namespace kit {

// Pixel arithmetic between the premultiplied pixels images keep and the
// straight RGBA that textures, pixel reads and decoders use.

// One straight RGBA pixel as a premultiplied ARGB32 word, each channel
// rounded to nearest.
uint32_t premultipliedArgb(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha);

// Turns `count` straight RGBA pixels (tightly packed bytes) into
// premultiplied ARGB32 words, as premultipliedArgb() does each one.
void premultiply(const uint8_t* rgba, size_t count, uint32_t* argbOut);

// One premultiplied 8-bit channel under `alpha` (1 to 255) made straight,
// rounded to nearest.
uint8_t unpremultiplied(uint32_t channel, uint32_t alpha);

// Turns premultiplied ARGB32 (native-endian words, alpha in the top byte)
// into straight RGBA bytes; fully transparent pixels become zero. `stride` is
// in bytes, the output tightly packed.
void unpremultiply(const uint8_t* argb, int width, int height, int stride, uint8_t* rgbaOut);

}  // namespace kit
