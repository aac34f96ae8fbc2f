#include "kit/backends/desktop/sdl_image_codec.h"

#include <SDL.h>
#include <SDL_image.h>

#include <cstring>
#include <string>

namespace kit {
namespace {

// Straight RGBA bytes of any surface; takes over (frees) the surface.
Result<PixelBuffer> pixelsOf(SDL_Surface* surface) {
  if (!surface)
    return Error{SDL_GetError()};
  SDL_Surface* rgba = SDL_ConvertSurfaceFormat(surface, SDL_PIXELFORMAT_RGBA32, 0);
  SDL_FreeSurface(surface);
  if (!rgba)
    return Error{SDL_GetError()};
  PixelBuffer out;
  out.width = rgba->w;
  out.height = rgba->h;
  out.rgba.resize(static_cast<size_t>(rgba->w) * rgba->h * 4);
  for (int y = 0; y < rgba->h; ++y) {
    std::memcpy(out.rgba.data() + static_cast<size_t>(y) * rgba->w * 4,
                static_cast<const uint8_t*>(rgba->pixels) + static_cast<ptrdiff_t>(y) * rgba->pitch,
                static_cast<size_t>(rgba->w) * 4);
  }
  SDL_FreeSurface(rgba);
  return out;
}

}  // namespace

Result<PixelBuffer> SdlImageCodec::decode(std::string_view bytes) {
  SDL_RWops* rw = SDL_RWFromConstMem(bytes.data(), static_cast<int>(bytes.size()));
  if (!rw)
    return Error{SDL_GetError()};
  return pixelsOf(IMG_Load_RW(rw, 1));
}

Result<PixelBuffer> SdlImageCodec::rasterizeSvg(std::string_view svg, int width, int height) {
  SDL_RWops* rw = SDL_RWFromConstMem(svg.data(), static_cast<int>(svg.size()));
  if (!rw)
    return Error{SDL_GetError()};
  SDL_Surface* surface = IMG_LoadSizedSVG_RW(rw, width, height);
  SDL_RWclose(rw);
  return pixelsOf(surface);
}

}  // namespace kit
