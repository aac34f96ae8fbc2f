#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/foundation/result.h"
#include "kit/ui/blend_mode.h"

namespace kit {

// Pixels handed across the seam: straight (not premultiplied) RGBA, 8 bits
// each, rows top to bottom, 4 * width bytes per row.
struct PixelBuffer {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgba;
};

// A drawing surface for composing images (the tint operations): fill and
// draw other pixels with the kit's blend modes. Coordinates are pixels.
class ImageCanvas {
 public:
  virtual ~ImageCanvas() = default;
  // Replaces the pixels under rect with the colour (copies, no blending).
  virtual void fillRect(const Rect& rect, const Color& color) = 0;
  // Draws `pixels` stretched to rect, combined by mode at opacity alpha;
  // pixels outside rect are never touched.
  virtual void drawPixels(const PixelBuffer& pixels, const Rect& rect, BlendMode mode,
                          double alpha) = 0;
  virtual PixelBuffer pixels() const = 0;
};

// Image decoding, rasterising and compositing as a backend supplies it: the
// desktop's SDL_image and Cairo, the browser's image elements and canvas.
// Decoding and rasterising are thread-safe where the backend has threads
// (images may be made on a worker); canvases are used by one thread at a time.
// Owned by the backend, borrowed by the UI and the renderer.
class ImageCodec {
 public:
  virtual ~ImageCodec() = default;

  // PNG or JPEG bytes, decoded at their own size.
  [[nodiscard]] virtual Result<PixelBuffer> decode(std::string_view bytes) = 0;
  // SVG text rasterised to fit width × height pixels, aspect kept.
  [[nodiscard]] virtual Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width,
                                                         int height) = 0;
  [[nodiscard]] virtual Result<std::string> encodePng(const PixelBuffer& pixels) = 0;
  [[nodiscard]] virtual Result<std::string> encodeJpeg(const PixelBuffer& pixels,
                                                       int quality) = 0;
  // A fully transparent canvas of width × height pixels.
  virtual std::unique_ptr<ImageCanvas> makeCanvas(int width, int height) = 0;
};

}  // namespace kit
