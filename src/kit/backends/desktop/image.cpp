#include "kit/ui/image.h"

#include <cairo.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "kit/foundation/write_file.h"
#include "kit/ui/image_context.h"
#include "kit/ui/premultiplied.h"

namespace kit {

struct Image::Impl {
  cairo_surface_t* surface;  // one reference, always an ARGB32 image surface
  Size size;
  double scale;

  Impl(cairo_surface_t* s, Size points, double pixelsPerPoint)
      : surface(s), size(points), scale(pixelsPerPoint) {}
  ~Impl() { cairo_surface_destroy(surface); }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
};

namespace {

constexpr size_t kMaxPngFileBytes = size_t{256} << 20;
constexpr unsigned char kPngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

void setError(std::string* error, std::string text) {
  if (error)
    *error = std::move(text);
}

uint32_t bigEndian32(const unsigned char* p) {
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | uint32_t{p[3]};
}

// Refuses what is plainly not a PNG, or a PNG too large to decode, from its
// first chunk alone so that no decoder memory is committed for it.
bool checkPngHeader(std::string_view data, std::string* error) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  if (data.size() < 8 || std::memcmp(bytes, kPngSignature, 8) != 0) {
    setError(error, "not a PNG file");
    return false;
  }
  if (data.size() < 24 || std::memcmp(bytes + 12, "IHDR", 4) != 0) {
    setError(error, "corrupt PNG: no image header");
    return false;
  }
  uint32_t width = bigEndian32(bytes + 16), height = bigEndian32(bytes + 20);
  if (width == 0 || height == 0) {
    setError(error, "corrupt PNG: the image is " + std::to_string(width) + "x" +
                        std::to_string(height) + " pixels");
    return false;
  }
  if (width > Image::kMaxPngSide || height > Image::kMaxPngSide) {
    setError(error, "PNG of " + std::to_string(width) + "x" + std::to_string(height) +
                        " pixels is larger than the limit of " +
                        std::to_string(Image::kMaxPngSide) + " a side");
    return false;
  }
  return true;
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

// The decoder gives opaque PNGs a 24-bit surface; images keep one format so
// every reader of the pixels can rely on the alpha byte.
cairo_surface_t* toArgb32(cairo_surface_t* decoded) {
  if (cairo_image_surface_get_format(decoded) == CAIRO_FORMAT_ARGB32)
    return decoded;
  cairo_surface_t* converted =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, cairo_image_surface_get_width(decoded),
                                 cairo_image_surface_get_height(decoded));
  cairo_t* cr = cairo_create(converted);
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_surface(cr, decoded, 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_destroy(decoded);
  cairo_surface_flush(converted);
  return converted;
}

}  // namespace

Image::Image(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}

Image Image::blank(Size size, double scale) {
  return ImageContext(size, scale).takeImage();
}

std::optional<Image> Image::loadPng(const std::string& path, double scale, std::string* error) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    setError(error, "cannot open " + path + ": " + std::strerror(errno));
    return std::nullopt;
  }
  std::string data;
  char buffer[65536];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0 &&
         data.size() <= kMaxPngFileBytes) {
    data.append(buffer, got);
  }
  bool failed = std::ferror(file) != 0;
  std::fclose(file);
  if (failed) {
    setError(error, "cannot read " + path);
    return std::nullopt;
  }
  if (data.size() > kMaxPngFileBytes) {
    setError(error, path + " is larger than any image this program accepts");
    return std::nullopt;
  }
  std::string why;
  auto image = fromPngData(data, scale, &why);
  if (!image)
    setError(error, path + ": " + why);
  return image;
}

std::optional<Image> Image::fromPngData(std::string_view data, double scale, std::string* error) {
  if (!checkPngHeader(data, error))
    return std::nullopt;
  PngReader reader{data};
  cairo_surface_t* decoded = cairo_image_surface_create_from_png_stream(readPng, &reader);
  if (cairo_status_t status = cairo_surface_status(decoded); status != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(decoded);
    // The decoder reports every damaged stream (a bad checksum, cut-off
    // data) as running out of memory; the header has ruled that out.
    setError(error, status == CAIRO_STATUS_NO_MEMORY
                        ? "corrupt PNG: damaged image data (a bad checksum or cut-off data)"
                        : std::string("corrupt PNG: ") + cairo_status_to_string(status));
    return std::nullopt;
  }
  cairo_surface_t* surface = toArgb32(decoded);
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(surface);
    setError(error, "out of memory for the decoded PNG");
    return std::nullopt;
  }
  if (!(std::isfinite(scale) && scale > 0))
    scale = 1;
  Size size{cairo_image_surface_get_width(surface) / scale,
            cairo_image_surface_get_height(surface) / scale};
  return Image(std::make_shared<const Impl>(surface, size, scale));
}

bool Image::savePng(const std::string& path, std::string* error) const {
  if (pixelWidth() == 0 || pixelHeight() == 0) {
    setError(error, "cannot write " + path + ": the image has no pixels");
    return false;
  }
  std::string png;
  if (cairo_status_t status = cairo_surface_write_to_png_stream(impl_->surface, appendPng, &png);
      status != CAIRO_STATUS_SUCCESS) {
    setError(error, "cannot write " + path + ": " + cairo_status_to_string(status));
    return false;
  }
  if (Status written = writeFileReplacing(path, png); !written) {
    setError(error, written.error());
    return false;
  }
  return true;
}

Size Image::size() const {
  return impl_->size;
}

double Image::scale() const {
  return impl_->scale;
}

int Image::pixelWidth() const {
  return cairo_image_surface_get_width(impl_->surface);
}

int Image::pixelHeight() const {
  return cairo_image_surface_get_height(impl_->surface);
}

Image::Pixel Image::pixelAt(int x, int y) const {
  if (x < 0 || y < 0 || x >= pixelWidth() || y >= pixelHeight())
    return {};
  const unsigned char* row =
      cairo_image_surface_get_data(impl_->surface) +
      static_cast<ptrdiff_t>(y) * cairo_image_surface_get_stride(impl_->surface);
  uint32_t argb;
  std::memcpy(&argb, row + static_cast<ptrdiff_t>(x) * 4, sizeof argb);
  uint32_t alpha = argb >> 24;
  if (alpha == 0)
    return {};
  return {unpremultiplied(argb >> 16 & 0xff, alpha), unpremultiplied(argb >> 8 & 0xff, alpha),
          unpremultiplied(argb & 0xff, alpha), static_cast<uint8_t>(alpha)};
}

void* Image::surface() const {
  return impl_->surface;
}

Image Image::adopt(void* surface, Size size, double scale) {
  return Image(std::make_shared<const Impl>(static_cast<cairo_surface_t*>(surface), size, scale));
}

}  // namespace kit
