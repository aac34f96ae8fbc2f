#include <SDL.h>
#include <SDL_image.h>

#include <algorithm>
#include <cmath>

#include "kit/ui/image.h"
#include "kit/ui/mail_compose_sink.h"

namespace kit {
namespace {

size_t appendToString(SDL_RWops* rw, const void* data, size_t size, size_t count) {
  auto* out = static_cast<std::string*>(rw->hidden.unknown.data1);
  out->append(static_cast<const char*>(data), size * count);
  return count;
}

}  // namespace

std::optional<std::string> jpegRepresentation(const Image& image, double quality) {
  const int width = image.pixelWidth();
  const int height = image.pixelHeight();
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
      const Image::Pixel p = image.pixelAt(x, y);
      row[3 * x] = static_cast<uint8_t>(p.red * p.alpha / 255);
      row[3 * x + 1] = static_cast<uint8_t>(p.green * p.alpha / 255);
      row[3 * x + 2] = static_cast<uint8_t>(p.blue * p.alpha / 255);
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
  const double q = std::isfinite(quality) ? std::clamp(quality, 0.0, 1.0) : 1.0;
  const int saved = IMG_SaveJPG_RW(surface, sink, 0, static_cast<int>(std::lround(q * 100)));
  SDL_FreeRW(sink);
  SDL_FreeSurface(surface);
  if (saved != 0 || bytes.empty())
    return std::nullopt;
  return bytes;
}

}  // namespace kit
