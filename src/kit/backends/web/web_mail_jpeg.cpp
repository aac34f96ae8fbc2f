// kit::jpegRepresentation for the browser build: canvas.toDataURL. Without a
// page (node) there is nothing to encode with.
#include <algorithm>

#include "kit/backends/web/browser_canvas.h"
#include "kit/backends/web/web_pixels.h"
#include "kit/ui/image_context.h"
#include "kit/ui/mail_compose_sink.h"

namespace kit {

std::optional<std::string> jpegRepresentation(const Image& image, double quality) {
  if (!web::hasCanvas() || image.pixelWidth() == 0 || image.pixelHeight() == 0)
    return std::nullopt;
  web::OffscreenCanvas canvas(image.pixelWidth(), image.pixelHeight());
  std::vector<uint8_t> rgba(static_cast<size_t>(image.pixelWidth()) * image.pixelHeight() * 4);
  for (int y = 0; y < image.pixelHeight(); ++y) {
    for (int x = 0; x < image.pixelWidth(); ++x) {
      const Image::Pixel p = image.pixelAt(x, y);
      uint8_t* out = rgba.data() + (static_cast<size_t>(y) * image.pixelWidth() + x) * 4;
      out[0] = p.red;
      out[1] = p.green;
      out[2] = p.blue;
      out[3] = p.alpha;
    }
  }
  canvas.put(rgba);
  std::string jpeg = canvas.encode("image/jpeg", std::clamp(quality, 0.0, 1.0));
  if (jpeg.empty())
    return std::nullopt;
  return jpeg;
}

}  // namespace kit
