#include "kit/backends/desktop/cairo_image_system.h"

#include <SDL.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace kit {
namespace {

struct SurfaceDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

// A Cairo surface over the bitmap's own memory: drawing on it changes the
// bitmap, nothing is copied.
SurfacePtr wrap(const Bitmap& bitmap) {
  return SurfacePtr(cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(bitmap.pixels.get()), CAIRO_FORMAT_ARGB32, bitmap.width,
      bitmap.height, bitmap.stride()));
}

double unit(double value) {
  return std::isnan(value) ? 0 : std::clamp(value, 0.0, 1.0);
}

cairo_operator_t cairoOperator(BlendMode mode) {
  switch (mode) {
    case BlendMode::Normal:
      return CAIRO_OPERATOR_OVER;
    case BlendMode::Multiply:
      return CAIRO_OPERATOR_MULTIPLY;
    case BlendMode::Screen:
      return CAIRO_OPERATOR_SCREEN;
    case BlendMode::Overlay:
      return CAIRO_OPERATOR_OVERLAY;
    case BlendMode::Darken:
      return CAIRO_OPERATOR_DARKEN;
    case BlendMode::Lighten:
      return CAIRO_OPERATOR_LIGHTEN;
    case BlendMode::ColorDodge:
      return CAIRO_OPERATOR_COLOR_DODGE;
    case BlendMode::ColorBurn:
      return CAIRO_OPERATOR_COLOR_BURN;
    case BlendMode::SoftLight:
      return CAIRO_OPERATOR_SOFT_LIGHT;
    case BlendMode::HardLight:
      return CAIRO_OPERATOR_HARD_LIGHT;
    case BlendMode::Difference:
      return CAIRO_OPERATOR_DIFFERENCE;
    case BlendMode::Exclusion:
      return CAIRO_OPERATOR_EXCLUSION;
    case BlendMode::Hue:
      return CAIRO_OPERATOR_HSL_HUE;
    case BlendMode::Saturation:
      return CAIRO_OPERATOR_HSL_SATURATION;
    case BlendMode::Color:
      return CAIRO_OPERATOR_HSL_COLOR;
    case BlendMode::Luminosity:
      return CAIRO_OPERATOR_HSL_LUMINOSITY;
    case BlendMode::Clear:
      return CAIRO_OPERATOR_CLEAR;
    case BlendMode::Copy:
      return CAIRO_OPERATOR_SOURCE;
    case BlendMode::SourceIn:
      return CAIRO_OPERATOR_IN;
    case BlendMode::SourceOut:
      return CAIRO_OPERATOR_OUT;
    case BlendMode::SourceAtop:
      return CAIRO_OPERATOR_ATOP;
    case BlendMode::DestinationOver:
      return CAIRO_OPERATOR_DEST_OVER;
    case BlendMode::DestinationIn:
      return CAIRO_OPERATOR_DEST_IN;
    case BlendMode::DestinationOut:
      return CAIRO_OPERATOR_DEST_OUT;
    case BlendMode::DestinationAtop:
      return CAIRO_OPERATOR_DEST_ATOP;
    case BlendMode::Xor:
      return CAIRO_OPERATOR_XOR;
    case BlendMode::PlusDarker:
      return CAIRO_OPERATOR_MULTIPLY;  // see BlendMode
    case BlendMode::PlusLighter:
      return CAIRO_OPERATOR_ADD;
  }
  return CAIRO_OPERATOR_OVER;  // a number cast past the last mode draws as Normal
}

bool isWhole(double value) {
  return value == std::floor(value);
}

struct PngReader {
  std::string_view data;
  size_t offset = 0;
};

cairo_status_t readPng(void* closure, unsigned char* out, unsigned int length) {
  auto* reader = static_cast<PngReader*>(closure);
  if (reader->data.size() - reader->offset < length)
    return CAIRO_STATUS_READ_ERROR;
  std::memcpy(out, reader->data.data() + reader->offset, length);
  reader->offset += length;
  return CAIRO_STATUS_SUCCESS;
}

cairo_status_t appendPng(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

Result<Bitmap> CairoImageSystem::decodePng(std::string_view bytes) {
  PngReader reader{bytes};
  SurfacePtr decoded(cairo_image_surface_create_from_png_stream(readPng, &reader));
  if (cairo_status_t status = cairo_surface_status(decoded.get()); status != CAIRO_STATUS_SUCCESS) {
    // The decoder reports every damaged stream (a bad checksum, cut-off
    // data) as running out of memory; the header has ruled that out.
    return Error{status == CAIRO_STATUS_NO_MEMORY
                     ? "corrupt PNG: damaged image data (a bad checksum or cut-off data)"
                     : std::string("corrupt PNG: ") + cairo_status_to_string(status)};
  }
  const int width = cairo_image_surface_get_width(decoded.get());
  const int height = cairo_image_surface_get_height(decoded.get());
  Bitmap out = Bitmap::uncleared(width, height);
  if (!out.pixels)
    return Error{"out of memory for the decoded PNG"};
  // The decoder gives opaque PNGs a 24-bit surface; images keep one format so
  // every reader of the pixels can rely on the alpha byte.
  SurfacePtr target = wrap(out);
  cairo_t* cr = cairo_create(target.get());
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_surface(cr, decoded.get(), 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(target.get());
  return out;
}

Result<std::string> CairoImageSystem::encodePng(const Bitmap& pixels) {
  SurfacePtr surface = wrap(pixels);
  std::string png;
  if (cairo_status_t status = cairo_surface_write_to_png_stream(surface.get(), appendPng, &png);
      status != CAIRO_STATUS_SUCCESS) {
    return Error{cairo_status_to_string(status)};
  }
  return png;
}

void CairoImageSystem::fill(Bitmap& target, const Rect& rect, const Color& color) {
  SurfacePtr surface = wrap(target);
  cairo_t* cr = cairo_create(surface.get());
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_rgba(cr, unit(color.red), unit(color.green), unit(color.blue),
                        unit(color.alpha));
  cairo_rectangle(cr, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  cairo_fill(cr);
  cairo_destroy(cr);
  cairo_surface_flush(surface.get());
}

void CairoImageSystem::composite(Bitmap& target, const Bitmap& source, const Composite& how) {
  const double x = how.target.origin.x, y = how.target.origin.y;
  const double width = how.target.size.width, height = how.target.size.height;
  SurfacePtr surface = wrap(target);
  SurfacePtr drawn = wrap(source);
  cairo_t* cr = cairo_create(surface.get());
  cairo_set_operator(cr, cairoOperator(how.mode));
  // Bounds every mode by the rectangle: Cairo's unbounded operators (in,
  // destination-in...) would otherwise clear the whole bitmap outside it. A
  // rectangle over the whole bitmap needs no clip, and the tinting path lives
  // on that case.
  if (x > 0 || y > 0 || x + width < target.width || y + height < target.height) {
    cairo_rectangle(cr, x, y, width, height);
    cairo_clip(cr);
  }
  cairo_pattern_t* pattern = cairo_pattern_create_for_surface(drawn.get());
  cairo_matrix_t toSource;
  cairo_matrix_init_scale(&toSource, how.sourceExtent.width / width,
                          how.sourceExtent.height / height);
  cairo_matrix_translate(&toSource, -x, -y);
  cairo_pattern_set_matrix(pattern, &toSource);
  // A pixel-for-pixel draw samples inside the image only; a stretched or
  // shifted one repeats the edge pixels rather than fading into transparency.
  const bool exact = how.sourceExtent.width == width && how.sourceExtent.height == height &&
                     isWhole(x) && isWhole(y);
  if (!exact)
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
  cairo_set_source(cr, pattern);
  cairo_pattern_destroy(pattern);
  cairo_paint_with_alpha(cr, unit(how.alpha));
  cairo_destroy(cr);
  cairo_surface_flush(surface.get());
}

void CairoImageSystem::releaseThreadState() {
  SDL_TLSCleanup();
}

}  // namespace kit
