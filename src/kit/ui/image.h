#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/geometry.h"
#include "kit/platform/bitmap.h"
#include "kit/platform/image_codec.h"

namespace kit {

// An immutable bitmap with a size in points and a scale: it holds
// ceil(points × scale) pixels each way, 32-bit premultiplied (kit::Bitmap) in
// memory. Copies share the pixels and cost a reference count; an image is
// never changed once made, so sharing is safe. New pixels come from
// ImageContext, PNG data or straight RGBA pixels; decoding and encoding go
// through the installed graphics (kit/foundation/graphics.h).
class Image {
 public:
  // One pixel as straight (not premultiplied) 8-bit RGBA.
  struct Pixel {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
    uint8_t alpha = 0;
    friend bool operator==(const Pixel&, const Pixel&) = default;
  };

  // Largest width or height in pixels a decoded PNG may have (256 MiB of
  // pixels at most); larger headers are refused before any pixel memory is taken.
  static constexpr int kMaxPngSide = 8192;

  // A fully transparent image. Scale 0 means the main screen's scale; a size
  // that is negative, not finite or too large for a bitmap gives no pixels.
  static Image blank(Size size, double scale = 0);

  // Decodes a PNG file or PNG bytes. The image's size in points is its pixel
  // size divided by scale (a scale that is not positive counts as 1). On
  // failure returns nothing and, when error is given, stores a one-line reason.
  [[nodiscard]] static std::optional<Image> loadPng(const std::string& path, double scale = 1,
                                                    std::string* error = nullptr);
  [[nodiscard]] static std::optional<Image> fromPngData(std::string_view data, double scale = 1,
                                                        std::string* error = nullptr);

  // Straight RGBA pixels (a decoder's or a rasteriser's), premultiplied into
  // an image of their pixel size divided by scale (a scale that is not
  // positive counts as 1). A buffer whose bytes do not match its size gives
  // an image without pixels.
  static Image fromPixels(const PixelBuffer& pixels, double scale = 1);

  // Writes the pixels as a PNG file (the scale is not recorded). False, with
  // the reason in error when given, if the file cannot be written.
  [[nodiscard]] bool savePng(const std::string& path, std::string* error = nullptr) const;

  Size size() const;  // points
  double scale() const;
  int pixelWidth() const;
  int pixelHeight() const;

  // The pixel at column x, row y counted from the top left; transparent
  // outside the image.
  Pixel pixelAt(int x, int y) const;

  // The premultiplied pixels themselves, for code that draws with them.
  const Bitmap& bitmap() const { return *pixels_; }

 private:
  friend class ImageContext;

  Image(std::shared_ptr<const Bitmap> pixels, Size size, double scale);

  std::shared_ptr<const Bitmap> pixels_;
  Size size_;
  double scale_ = 1;
};

}  // namespace kit
