#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "kit/foundation/result.h"

namespace kit {

// Pixels handed across the seam: straight (not premultiplied) RGBA, 8 bits
// each, rows top to bottom, 4 * width bytes per row.
struct PixelBuffer {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgba;
};

// Decoding and rasterising the application's image files as a backend does
// it (the desktop's SDL_image, the browser's image elements drawn to a
// canvas). Owned by the backend, borrowed by the renderer. Main thread only,
// unless the implementation says otherwise (the image systems, which are
// codecs too, are thread-safe).
class ImageCodec {
 public:
  virtual ~ImageCodec() = default;

  // PNG or JPEG bytes, decoded at their own size.
  [[nodiscard]] virtual Result<PixelBuffer> decode(std::string_view bytes) = 0;
  // SVG text rasterised to fit width × height pixels with its aspect ratio
  // kept (so one side may come out shorter). A side of 0 follows from the
  // other side and the aspect ratio.
  [[nodiscard]] virtual Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width,
                                                         int height) = 0;
};

}  // namespace kit
