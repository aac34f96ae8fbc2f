#include "kit/ui/svg_image.h"

#include <SDL.h>
#include <SDL_image.h>
#include <cairo.h>

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace kit {
namespace {

void setError(std::string* error, std::string text) {
  if (error)
    *error = std::move(text);
}

struct SurfaceDeleter {
  void operator()(SDL_Surface* s) const { SDL_FreeSurface(s); }
};
using SurfacePtr = std::unique_ptr<SDL_Surface, SurfaceDeleter>;

struct CairoDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};

cairo_status_t appendPng(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

// The value of attribute `name` in `tag`, if present.
std::optional<std::string_view> attribute(std::string_view tag, std::string_view name) {
  for (size_t at = tag.find(name); at != std::string_view::npos; at = tag.find(name, at + 1)) {
    const bool starts = at > 0 && std::isspace(static_cast<unsigned char>(tag[at - 1]));
    size_t i = at + name.size();
    while (i < tag.size() && std::isspace(static_cast<unsigned char>(tag[i])))
      ++i;
    if (!starts || i >= tag.size() || tag[i] != '=')
      continue;
    ++i;
    while (i < tag.size() && std::isspace(static_cast<unsigned char>(tag[i])))
      ++i;
    if (i >= tag.size() || (tag[i] != '"' && tag[i] != '\''))
      continue;
    const size_t end = tag.find(tag[i], i + 1);
    if (end == std::string_view::npos)
      return std::nullopt;
    return tag.substr(i + 1, end - i - 1);
  }
  return std::nullopt;
}

// The numbers at the start of `text`, separated by spaces or commas.
std::vector<double> numbers(std::string_view text) {
  std::string copy(text);
  std::vector<double> out;
  const char* p = copy.c_str();
  for (;;) {
    while (*p == ' ' || *p == ',' || *p == '\t' || *p == '\n' || *p == '\r')
      ++p;
    char* end = nullptr;
    const double value = std::strtod(p, &end);
    if (end == p)
      return out;
    out.push_back(value);
    p = end;
  }
}

bool positive(double value) {
  return std::isfinite(value) && value > 0;
}

// Whether the root element gives the drawing a size (width and height, or a
// view box). The reader drops drawings without one, and leaks what it had
// parsed when it does, so they are refused before it sees them.
bool declaresSize(std::string_view svg) {
  const size_t open = svg.find("<svg");
  const size_t close = open == std::string_view::npos ? open : svg.find('>', open);
  if (close == std::string_view::npos)
    return false;
  const std::string_view tag = svg.substr(open, close - open);
  const auto width = attribute(tag, "width"), height = attribute(tag, "height");
  if (width && height) {
    const auto w = numbers(*width), h = numbers(*height);
    return !w.empty() && !h.empty() && positive(w[0]) && positive(h[0]);
  }
  if (const auto box = attribute(tag, "viewBox")) {
    const auto v = numbers(*box);
    return v.size() == 4 && positive(v[2]) && positive(v[3]);
  }
  return false;
}

int pixelsFor(double points, double scale) {
  const double pixels = std::round(points * scale);
  return std::isfinite(pixels) && pixels >= 1 && pixels <= kMaxSvgPixelSide
             ? static_cast<int>(pixels)
             : 0;
}

}  // namespace

std::optional<Image> rasterizeSvg(std::string_view svg, Size size, double scale,
                                  std::string* error) {
  if (svg.size() > kMaxSvgBytes) {
    setError(error, "SVG of " + std::to_string(svg.size()) + " bytes is larger than the limit");
    return std::nullopt;
  }
  if (!declaresSize(svg)) {
    setError(error, "not a usable SVG: no <svg> element with a size");
    return std::nullopt;
  }
  if (!(std::isfinite(scale) && scale > 0))
    scale = 1;
  const int width = pixelsFor(size.width, scale), height = pixelsFor(size.height, scale);
  if (width == 0 || height == 0) {
    setError(error, "no usable size to draw the SVG at");
    return std::nullopt;
  }

  // The reader takes its own terminated copy of the bytes.
  SDL_RWops* source = SDL_RWFromConstMem(svg.data(), static_cast<int>(svg.size()));
  if (!source) {
    setError(error, std::string("cannot read the SVG: ") + SDL_GetError());
    return std::nullopt;
  }
  SurfacePtr drawn(IMG_LoadSizedSVG_RW(source, width, height));
  SDL_RWclose(source);
  if (!drawn) {
    setError(error, std::string("not a usable SVG: ") + SDL_GetError());
    return std::nullopt;
  }
  SurfacePtr rgba(SDL_ConvertSurfaceFormat(drawn.get(), SDL_PIXELFORMAT_RGBA32, 0));
  if (!rgba || rgba->w <= 0 || rgba->h <= 0) {
    setError(error, "the SVG drew nothing");
    return std::nullopt;
  }

  // Premultiplied native-endian ARGB, as the images keep their pixels; the
  // image is then built from PNG bytes, its one way in from raw pixels.
  std::unique_ptr<cairo_surface_t, CairoDeleter> surface(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, rgba->w, rgba->h));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
    setError(error, "out of memory for the SVG's pixels");
    return std::nullopt;
  }
  cairo_surface_flush(surface.get());
  unsigned char* out = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < rgba->h; ++y) {
    const auto* in =
        static_cast<const uint8_t*>(rgba->pixels) + static_cast<ptrdiff_t>(y) * rgba->pitch;
    auto* row = reinterpret_cast<uint32_t*>(out + static_cast<ptrdiff_t>(y) * stride);
    for (int x = 0; x < rgba->w; ++x) {
      const uint32_t a = in[4 * x + 3];
      const uint32_t r = (in[4 * x] * a + 127) / 255;
      const uint32_t g = (in[4 * x + 1] * a + 127) / 255;
      const uint32_t b = (in[4 * x + 2] * a + 127) / 255;
      row[x] = a << 24 | r << 16 | g << 8 | b;
    }
  }
  cairo_surface_mark_dirty(surface.get());

  std::string png;
  if (cairo_surface_write_to_png_stream(surface.get(), appendPng, &png) != CAIRO_STATUS_SUCCESS) {
    setError(error, "cannot encode the SVG's pixels");
    return std::nullopt;
  }
  return Image::fromPngData(png, scale, error);
}

}  // namespace kit
