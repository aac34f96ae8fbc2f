#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace kit {

// Pixels as the kit's images keep them: 32-bit premultiplied ARGB words in
// native byte order (alpha in the top byte), rows top to bottom, `width`
// words per row with no padding. The layout drawing libraries call ARGB32,
// so a backend can draw into the memory in place. Move-only; images share
// one through a shared_ptr.
struct Bitmap {
  int width = 0;
  int height = 0;
  std::unique_ptr<uint32_t[]> pixels;

  // Pixels of the given size, left as the allocator gives them (the caller
  // clears or overwrites them); no pixels at all when either side is zero or
  // the memory cannot be had.
  static Bitmap uncleared(int width, int height) {
    Bitmap out;
    if (width <= 0 || height <= 0)
      return out;
    // Handed straight to its owner: the browser build's library has no
    // make_unique_for_overwrite, and make_unique would clear the pixels.
    out.pixels.reset(new (std::nothrow) uint32_t[pixelCount(width, height)]);
    if (!out.pixels)
      return out;
    out.width = width;
    out.height = height;
    return out;
  }

  static size_t pixelCount(int width, int height) { return size_t(width) * size_t(height); }
  size_t byteCount() const { return pixelCount(width, height) * 4; }
  int stride() const { return width * 4; }  // bytes per row
};

}  // namespace kit
