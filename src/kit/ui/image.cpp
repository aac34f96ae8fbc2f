#include "kit/ui/image.h"

#include <cmath>
#include <cstring>

#include "kit/foundation/graphics.h"
#include "kit/foundation/read_file.h"
#include "kit/foundation/write_file.h"
#include "kit/ui/image_context.h"
#include "kit/ui/premultiplied.h"

namespace kit {
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

double usableScale(double scale) {
  return std::isfinite(scale) && scale > 0 ? scale : 1;
}

}  // namespace

Image::Image(std::shared_ptr<const Bitmap> pixels, Size size, double scale)
    : pixels_(std::move(pixels)), size_(size), scale_(scale) {}

Image Image::blank(Size size, double scale) {
  return ImageContext(size, scale).takeImage();
}

Image Image::fromPixels(const PixelBuffer& pixels, double scale) {
  scale = usableScale(scale);
  const bool matches = pixels.width > 0 && pixels.height > 0 &&
                       pixels.rgba.size() == Bitmap::pixelCount(pixels.width, pixels.height) * 4;
  Bitmap bitmap = matches ? Bitmap::uncleared(pixels.width, pixels.height) : Bitmap{};
  premultiply(pixels.rgba.data(), Bitmap::pixelCount(bitmap.width, bitmap.height),
              bitmap.pixels.get());
  const Size size{bitmap.width / scale, bitmap.height / scale};
  return Image(std::make_shared<const Bitmap>(std::move(bitmap)), size, scale);
}

std::optional<Image> Image::loadPng(const std::string& path, double scale, std::string* error) {
  Result<std::string> data = readSmallFileOrWhy(path, kMaxPngFileBytes);
  if (!data) {
    setError(error, "cannot read " + path + ": " + data.error());
    return std::nullopt;
  }
  std::string why;
  auto image = fromPngData(*data, scale, &why);
  if (!image)
    setError(error, path + ": " + why);
  return image;
}

std::optional<Image> Image::fromPngData(std::string_view data, double scale, std::string* error) {
  if (!checkPngHeader(data, error))
    return std::nullopt;
  Result<Bitmap> decoded = Graphics::current().images().decodePng(data);
  if (!decoded) {
    setError(error, decoded.error());
    return std::nullopt;
  }
  scale = usableScale(scale);
  const Size size{decoded->width / scale, decoded->height / scale};
  return Image(std::make_shared<const Bitmap>(std::move(*decoded)), size, scale);
}

bool Image::savePng(const std::string& path, std::string* error) const {
  if (pixelWidth() == 0 || pixelHeight() == 0) {
    setError(error, "cannot write " + path + ": the image has no pixels");
    return false;
  }
  Result<std::string> png = Graphics::current().images().encodePng(*pixels_);
  if (!png) {
    setError(error, "cannot write " + path + ": " + png.error());
    return false;
  }
  if (Status written = writeFileReplacing(path, *png); !written) {
    setError(error, written.error());
    return false;
  }
  return true;
}

Size Image::size() const {
  return size_;
}

double Image::scale() const {
  return scale_;
}

int Image::pixelWidth() const {
  return pixels_->width;
}

int Image::pixelHeight() const {
  return pixels_->height;
}

Image::Pixel Image::pixelAt(int x, int y) const {
  if (x < 0 || y < 0 || x >= pixelWidth() || y >= pixelHeight())
    return {};
  const uint32_t argb = pixels_->pixels[static_cast<size_t>(y) * pixelWidth() + x];
  uint32_t alpha = argb >> 24;
  if (alpha == 0)
    return {};
  return {unpremultiplied(argb >> 16 & 0xff, alpha), unpremultiplied(argb >> 8 & 0xff, alpha),
          unpremultiplied(argb & 0xff, alpha), static_cast<uint8_t>(alpha)};
}

}  // namespace kit
