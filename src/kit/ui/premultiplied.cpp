#include "kit/ui/premultiplied.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace kit {

uint32_t premultipliedArgb(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
  const uint32_t a = alpha;
  return a << 24 | (red * a + 127) / 255 << 16 | (green * a + 127) / 255 << 8 |
         (blue * a + 127) / 255;
}

void premultiply(const uint8_t* rgba, size_t count, uint32_t* argbOut) {
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* p = rgba + i * 4;
    argbOut[i] = premultipliedArgb(p[0], p[1], p[2], p[3]);
  }
}

uint8_t unpremultiplied(uint32_t channel, uint32_t alpha) {
  return static_cast<uint8_t>(std::min<uint32_t>(255, (channel * 255 + alpha / 2) / alpha));
}

void unpremultiply(const uint8_t* argb, int width, int height, int stride, uint8_t* rgbaOut) {
  for (int row = 0; row < height; ++row) {
    const auto* src =
        reinterpret_cast<const uint32_t*>(argb + static_cast<ptrdiff_t>(row) * stride);
    uint8_t* dst = rgbaOut + static_cast<size_t>(row) * width * 4;
    for (int col = 0; col < width; ++col) {
      const uint32_t p = src[col];
      const uint32_t a = p >> 24;
      uint8_t* out = dst + col * 4;
      if (a == 0) {
        std::memset(out, 0, 4);
        continue;
      }
      out[0] = unpremultiplied((p >> 16) & 0xff, a);
      out[1] = unpremultiplied((p >> 8) & 0xff, a);
      out[2] = unpremultiplied(p & 0xff, a);
      out[3] = static_cast<uint8_t>(a);
    }
  }
}

}  // namespace kit
