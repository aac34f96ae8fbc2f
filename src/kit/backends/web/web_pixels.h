#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/ui/image.h"

// The browser build's image pixels: what kit::Image holds (straight RGBA,
// rows top to bottom), shared by the image, the image context and the SVG
// rasteriser of this backend.
namespace kit::web {

struct Pixels {
  Size size;  // points
  double scale = 1;
  int width = 0;
  int height = 0;
  std::vector<uint8_t> rgba;
};

// Transparent pixels of ceil(size × scale) each way (kit/ui/image_extent.h;
// a scale that is not usable is the main screen's).
Pixels makePixels(Size size, double scale);

// kit::Image's one way in from raw pixels in this backend (the desktop's is
// PNG bytes): Image::fromPngData takes these bytes as they stand. A PNG the
// browser would have to decode asynchronously is refused there.
std::string rawImageBytes(int width, int height, const std::vector<uint8_t>& rgba);
bool readRawImage(std::string_view data, int& width, int& height, std::vector<uint8_t>& rgba);

}  // namespace kit::web

namespace kit {

// What kit::Image holds here (its definition is this backend's).
struct Image::Impl : web::Pixels {};

}  // namespace kit
