// jpegRepresentation: the image's pixels encoded by the installed graphics.
#include <algorithm>
#include <cmath>

#include "kit/foundation/graphics.h"
#include "kit/ui/image.h"
#include "kit/ui/mail_compose_sink.h"

namespace kit {

std::optional<std::string> jpegRepresentation(const Image& image, double quality) {
  if (image.pixelWidth() <= 0 || image.pixelHeight() <= 0)
    return std::nullopt;
  const double q = std::isfinite(quality) ? std::clamp(quality, 0.0, 1.0) : 1.0;
  std::optional<std::string> jpeg = Graphics::current().images().encodeJpeg(image.bitmap(), q);
  if (!jpeg || jpeg->empty())
    return std::nullopt;
  return jpeg;
}

}  // namespace kit
