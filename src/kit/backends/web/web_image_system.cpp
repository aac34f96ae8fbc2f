#include "kit/backends/web/web_image_system.h"

#include <algorithm>
#include <cmath>

#include "kit/backends/web/browser_canvas.h"
#include "kit/ui/premultiplied.h"

namespace kit {
namespace {

uint8_t byte(double unit) {
  return static_cast<uint8_t>(std::lround(std::clamp(unit, 0.0, 1.0) * 255));
}

// Canvases take and give straight RGBA (ImageData's layout).
std::vector<uint8_t> straight(const Bitmap& pixels) {
  std::vector<uint8_t> rgba(pixels.byteCount());
  unpremultiply(reinterpret_cast<const uint8_t*>(pixels.pixels.get()), pixels.width, pixels.height,
                pixels.stride(), rgba.data());
  return rgba;
}

void premultiplyInto(const std::vector<uint8_t>& rgba, Bitmap& pixels) {
  premultiply(rgba.data(),
              std::min(Bitmap::pixelCount(pixels.width, pixels.height), rgba.size() / 4),
              pixels.pixels.get());
}

std::optional<std::string> encode(const Bitmap& pixels, const char* type, double quality) {
  if (!web::hasCanvas() || pixels.width == 0 || pixels.height == 0)
    return std::nullopt;
  web::OffscreenCanvas canvas(pixels.width, pixels.height);
  canvas.put(straight(pixels));
  std::string bytes = canvas.encode(type, quality);
  if (bytes.empty())
    return std::nullopt;
  return bytes;
}

}  // namespace

Result<PixelBuffer> WebImageSystem::rasterizeSvg(std::string_view svg, int width, int height) {
  if (!web::hasCanvas())
    return PixelBuffer{width, height, std::vector<uint8_t>(Bitmap::pixelCount(width, height) * 4)};
  return canvas_.rasterizeSvg(svg, width, height);
}

Result<Bitmap> WebImageSystem::decodePng(std::string_view bytes) {
  Result<PixelBuffer> decoded = canvas_.decode(bytes);
  if (!decoded)
    return Error{decoded.error()};
  Bitmap bitmap = Bitmap::uncleared(decoded->width, decoded->height);
  if (!bitmap.pixels)
    return Error{"no memory for a PNG of " + std::to_string(decoded->width) + " x " +
                 std::to_string(decoded->height) + " pixels"};
  premultiplyInto(decoded->rgba, bitmap);
  return bitmap;
}

Result<std::string> WebImageSystem::encodePng(const Bitmap& pixels) {
  std::optional<std::string> png = encode(pixels, "image/png", 1);
  if (!png)
    return Error{"no canvas to encode a PNG with"};
  return std::move(*png);
}

std::optional<std::string> WebImageSystem::encodeJpeg(const Bitmap& pixels, double quality) {
  return encode(pixels, "image/jpeg", quality);
}

void WebImageSystem::fill(Bitmap& target, const Rect& rect, const Color& color) {
  const int x0 = std::clamp(static_cast<int>(std::lround(rect.origin.x)), 0, target.width);
  const int y0 = std::clamp(static_cast<int>(std::lround(rect.origin.y)), 0, target.height);
  const int x1 = std::clamp(static_cast<int>(std::lround(rect.maxX())), 0, target.width);
  const int y1 = std::clamp(static_cast<int>(std::lround(rect.maxY())), 0, target.height);
  const uint32_t word =
      premultipliedArgb(byte(color.red), byte(color.green), byte(color.blue), byte(color.alpha));
  for (int y = y0; y < y1; ++y) {
    uint32_t* row = target.pixels.get() + static_cast<size_t>(y) * target.width;
    std::fill(row + x0, row + x1, word);
  }
}

void WebImageSystem::composite(Bitmap& target, const Bitmap& source, const Composite& how) {
  if (!web::hasCanvas())
    return;
  web::OffscreenCanvas canvas(target.width, target.height);
  canvas.put(straight(target));
  web::OffscreenCanvas drawn(source.width, source.height);
  drawn.put(straight(source));
  canvas.draw(drawn, how.target.origin.x, how.target.origin.y, how.target.size.width,
              how.target.size.height, web::compositeOperationOf(how.mode),
              std::clamp(how.alpha, 0.0, 1.0));
  premultiplyInto(canvas.get(), target);
}

}  // namespace kit
