#include "kit/ui/image_context.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "kit/ui/image_extent.h"

namespace kit {

namespace {

// Cairo's own limit on an image surface's side.
constexpr double kMaxPixelSide = 32767;

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

// Pixels are allocated without clearing and cleared on first use, unless that
// use is a fill over the whole bitmap: tinting starts with one, and clearing
// megapixels only to overwrite them would cost as much as the fill itself.
cairo_surface_t* createUncleared(int width, int height) {
  static const cairo_user_data_key_t kPixelsKey{};
  int stride = cairo_format_stride_for_width(CAIRO_FORMAT_ARGB32, width);
  if (width == 0 || height == 0 || stride <= 0) {
    return cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0);
  }
  auto* pixels = static_cast<unsigned char*>(std::malloc(size_t(stride) * size_t(height)));
  if (!pixels)
    return cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0);
  cairo_surface_t* surface =
      cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_ARGB32, width, height, stride);
  if (cairo_surface_set_user_data(surface, &kPixelsKey, pixels, std::free) !=
      CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(surface);
    std::free(pixels);
    return cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0);
  }
  return surface;
}

}  // namespace

struct ImageContext::State {
  Size size;
  double scale;
  cairo_surface_t* surface;
  cairo_t* cr;
  bool uncleared = true;  // the pixels hold whatever the allocator left
  bool shared = false;    // takeImage() handed out the pixels

  int pixelWidth() const { return cairo_image_surface_get_width(surface); }
  int pixelHeight() const { return cairo_image_surface_get_height(surface); }

  // Makes the pixels the context's own and initialised before drawing reads or
  // blends with them. A fill that replaces every pixel passes
  // coversEverything: then neither clearing nor copying is needed.
  void prepare(bool coversEverything = false) {
    if (shared) {
      unshare(!coversEverything);
    } else if (uncleared && !coversEverything) {
      clear();
    }
    uncleared = false;
  }

  void clear() {
    if (unsigned char* pixels = cairo_image_surface_get_data(surface)) {
      std::memset(pixels, 0,
                  size_t(cairo_image_surface_get_stride(surface)) * size_t(pixelHeight()));
      cairo_surface_mark_dirty(surface);
    }
    uncleared = false;
  }

  // Gives the context pixels of its own again after takeImage(), so the taken
  // image never changes under its holder.
  void unshare(bool copyPixels) {
    cairo_surface_t* own = createUncleared(pixelWidth(), pixelHeight());
    cairo_t* ownCr = cairo_create(own);
    if (copyPixels) {
      cairo_set_operator(ownCr, CAIRO_OPERATOR_SOURCE);
      cairo_set_source_surface(ownCr, surface, 0, 0);
      cairo_paint(ownCr);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    surface = own;
    cr = ownCr;
    shared = false;
  }
};

ImageContext::ImageContext(Size size, double scale) : state_(std::make_unique<State>()) {
  const ImageExtent extent = imageExtent(size, scale, kMaxPixelSide);
  state_->size = extent.size;
  state_->scale = extent.scale;
  state_->surface = createUncleared(extent.width, extent.height);
  state_->cr = cairo_create(state_->surface);
}

ImageContext::~ImageContext() {
  cairo_destroy(state_->cr);
  cairo_surface_destroy(state_->surface);
}

Size ImageContext::size() const {
  return state_->size;
}

double ImageContext::scale() const {
  return state_->scale;
}

void ImageContext::fillRect(const Rect& rect, const Color& color) {
  double s = state_->scale;
  double x = rect.origin.x * s, y = rect.origin.y * s;
  double width = rect.size.width * s, height = rect.size.height * s;
  state_->prepare(x <= 0 && y <= 0 && x + width >= state_->pixelWidth() &&
                  y + height >= state_->pixelHeight());
  cairo_t* cr = state_->cr;
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_rgba(cr, unit(color.red), unit(color.green), unit(color.blue),
                        unit(color.alpha));
  cairo_rectangle(cr, x, y, width, height);
  cairo_fill(cr);
}

void ImageContext::drawImage(const Image& image, const Rect& rect, BlendMode mode, double alpha) {
  // Nominal pixel extents (points × scale) rather than whole pixel counts, so
  // the image's points land on the rectangle's points exactly.
  double sourceWidth = image.size().width * image.scale();
  double sourceHeight = image.size().height * image.scale();
  double s = state_->scale;
  double x = rect.origin.x * s, y = rect.origin.y * s;
  double width = rect.size.width * s, height = rect.size.height * s;
  if (!(width > 0 && height > 0 && sourceWidth > 0 && sourceHeight > 0))
    return;
  if (!(std::isfinite(x) && std::isfinite(y) && std::isfinite(width) && std::isfinite(height))) {
    return;
  }
  state_->prepare();
  cairo_t* cr = state_->cr;
  cairo_set_operator(cr, cairoOperator(mode));
  // Bounds every mode by the rectangle: Cairo's unbounded operators (in,
  // destination-in...) would otherwise clear the whole bitmap outside it. A
  // rectangle over the whole bitmap needs no clip, and the tinting path lives
  // on that case.
  bool clipped =
      x > 0 || y > 0 || x + width < state_->pixelWidth() || y + height < state_->pixelHeight();
  if (clipped) {
    cairo_rectangle(cr, x, y, width, height);
    cairo_clip(cr);
  }
  cairo_pattern_t* pattern =
      cairo_pattern_create_for_surface(static_cast<cairo_surface_t*>(image.surface()));
  cairo_matrix_t toSource;
  cairo_matrix_init_scale(&toSource, sourceWidth / width, sourceHeight / height);
  cairo_matrix_translate(&toSource, -x, -y);
  cairo_pattern_set_matrix(pattern, &toSource);
  // A pixel-for-pixel draw samples inside the image only; a stretched or
  // shifted one repeats the edge pixels rather than fading into transparency.
  bool exact = sourceWidth == width && sourceHeight == height && isWhole(x) && isWhole(y);
  if (!exact)
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
  cairo_set_source(cr, pattern);
  cairo_pattern_destroy(pattern);
  cairo_paint_with_alpha(cr, unit(alpha));
  if (clipped)
    cairo_reset_clip(cr);
}

Image ImageContext::takeImage() {
  if (state_->uncleared)
    state_->clear();
  cairo_surface_flush(state_->surface);
  state_->shared = true;
  return Image::adopt(cairo_surface_reference(state_->surface), state_->size, state_->scale);
}

}  // namespace kit
