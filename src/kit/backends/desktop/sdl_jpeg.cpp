// CairoImageSystem's JPEG encoder: SDL_image's.
#include <SDL.h>
#include <SDL_image.h>

#include <algorithm>
#include <cmath>

#include "kit/backends/desktop/cairo_image_system.h"
#include "kit/ui/premultiplied.h"

namespace kit {
namespace {

size_t appendToString(SDL_RWops* rw, const void* data, size_t size, size_t count) {
  auto* out = static_cast<std::string*>(rw->hidden.unknown.data1);
  out->append(static_cast<const char*>(data), size * count);
  return count;
}

}  // namespace

std::optional<std::string> CairoImageSystem::encodeJpeg(const Bitmap& pixels, double quality) {
  const int width = pixels.width;
  const int height = pixels.height;
  if (width <= 0 || height <= 0)
    return std::nullopt;
  SDL_Surface* surface =
      SDL_CreateRGBSurfaceWithFormat(0, width, height, 24, SDL_PIXELFORMAT_RGB24);
  if (!surface)
    return std::nullopt;
  // JPEG has no alpha: transparent parts come out black, as on the platform.
  for (int y = 0; y < height; ++y) {
    auto* row = static_cast<uint8_t*>(surface->pixels) + static_cast<ptrdiff_t>(y) * surface->pitch;
    for (int x = 0; x < width; ++x) {
      const uint32_t p = pixels.pixels[static_cast<size_t>(y) * width + x];
      const uint32_t alpha = p >> 24;
      if (alpha == 0) {
        row[3 * x] = row[3 * x + 1] = row[3 * x + 2] = 0;
        continue;
      }
      // JPEG has no alpha: each channel weighed by it, so transparent is black.
      row[3 * x] = static_cast<uint8_t>(unpremultiplied(p >> 16 & 0xff, alpha) * alpha / 255);
      row[3 * x + 1] = static_cast<uint8_t>(unpremultiplied(p >> 8 & 0xff, alpha) * alpha / 255);
      row[3 * x + 2] = static_cast<uint8_t>(unpremultiplied(p & 0xff, alpha) * alpha / 255);
    }
  }
  std::string bytes;
  SDL_RWops* sink = SDL_AllocRW();
  if (!sink) {
    SDL_FreeSurface(surface);
    return std::nullopt;
  }
  sink->type = SDL_RWOPS_UNKNOWN;
  sink->write = appendToString;
  sink->hidden.unknown.data1 = &bytes;
  const int saved = IMG_SaveJPG_RW(surface, sink, 0, static_cast<int>(std::lround(quality * 100)));
  SDL_FreeRW(sink);
  SDL_FreeSurface(surface);
  if (saved != 0 || bytes.empty())
    return std::nullopt;
  return bytes;
}

}  // namespace kit
