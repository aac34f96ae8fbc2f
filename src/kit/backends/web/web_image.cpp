// kit::Image for the browser build: straight RGBA pixels in wasm memory, so
// copies share them and reads need no browser call. PNG comes in only as
// bytes the browser would decode asynchronously, so loading one is refused
// with a reason; saving encodes through a canvas.
#include <cmath>
#include <fstream>

#include "kit/backends/web/browser_canvas.h"
#include "kit/backends/web/web_pixels.h"
#include "kit/ui/image.h"
#include "kit/ui/image_extent.h"

namespace kit::web {
namespace {

constexpr std::string_view kRawMagic = "twinlanes-rgba\n";
constexpr uint32_t kLargestSide = 16384;

void putInt(std::string& out, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    out += static_cast<char>((value >> shift) & 0xff);
}

uint32_t getInt(std::string_view in, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i)
    value = value << 8 | static_cast<uint8_t>(in[at + i]);
  return value;
}

}  // namespace

Pixels makePixels(Size size, double scale) {
  const ImageExtent extent = imageExtent(size, scale, kLargestSide);
  Pixels out;
  out.size = extent.size;
  out.scale = extent.scale;
  out.width = extent.width;
  out.height = extent.height;
  out.rgba.assign(static_cast<size_t>(out.width) * out.height * 4, 0);
  return out;
}

std::string rawImageBytes(int width, int height, const std::vector<uint8_t>& rgba) {
  std::string out(kRawMagic);
  putInt(out, static_cast<uint32_t>(width));
  putInt(out, static_cast<uint32_t>(height));
  out.append(reinterpret_cast<const char*>(rgba.data()), rgba.size());
  return out;
}

bool readRawImage(std::string_view data, int& width, int& height, std::vector<uint8_t>& rgba) {
  const size_t header = kRawMagic.size() + 8;
  if (data.size() < header || data.substr(0, kRawMagic.size()) != kRawMagic)
    return false;
  const uint32_t w = getInt(data, kRawMagic.size()), h = getInt(data, kRawMagic.size() + 4);
  if (w == 0 || h == 0 || w > kLargestSide || h > kLargestSide ||
      data.size() - header != static_cast<size_t>(w) * h * 4)
    return false;
  width = static_cast<int>(w);
  height = static_cast<int>(h);
  rgba.assign(data.begin() + static_cast<std::ptrdiff_t>(header), data.end());
  return true;
}

}  // namespace kit::web

namespace kit {

namespace {

void setError(std::string* error, std::string text) {
  if (error)
    *error = std::move(text);
}

}  // namespace

Image Image::blank(Size size, double scale) {
  auto impl = std::make_shared<Impl>();
  static_cast<web::Pixels&>(*impl) = web::makePixels(size, scale);
  return Image(std::move(impl));
}

std::optional<Image> Image::loadPng(const std::string& path, double scale, std::string* error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    setError(error, "cannot read " + path);
    return std::nullopt;
  }
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return fromPngData(bytes, scale, error);
}

std::optional<Image> Image::fromPngData(std::string_view data, double scale, std::string* error) {
  if (!(std::isfinite(scale) && scale > 0))
    scale = 1;
  int width = 0, height = 0;
  std::vector<uint8_t> rgba;
  if (!web::readRawImage(data, width, height, rgba)) {
    setError(error, "the browser build decodes no PNG data (its art is SVG)");
    return std::nullopt;
  }
  auto impl = std::make_shared<Impl>();
  impl->size = {width / scale, height / scale};
  impl->scale = scale;
  impl->width = width;
  impl->height = height;
  impl->rgba = std::move(rgba);
  return Image(std::move(impl));
}

bool Image::savePng(const std::string& path, std::string* error) const {
  if (!web::hasCanvas() || pixelWidth() == 0 || pixelHeight() == 0) {
    setError(error, "no canvas to encode a PNG with");
    return false;
  }
  web::OffscreenCanvas canvas(pixelWidth(), pixelHeight());
  canvas.put(impl_->rgba);
  const std::string png = canvas.encode("image/png", 1);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (png.empty() || !(file << png)) {
    setError(error, "cannot write " + path);
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
  return impl_->width;
}

int Image::pixelHeight() const {
  return impl_->height;
}

Image::Pixel Image::pixelAt(int x, int y) const {
  if (x < 0 || y < 0 || x >= impl_->width || y >= impl_->height)
    return {};
  const uint8_t* p = impl_->rgba.data() + (static_cast<size_t>(y) * impl_->width + x) * 4;
  return {p[0], p[1], p[2], p[3]};
}

Image::Image(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}

}  // namespace kit
