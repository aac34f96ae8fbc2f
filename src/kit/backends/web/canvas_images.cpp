#include "kit/backends/web/canvas_images.h"

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>

#include "kit/backends/web/browser_canvas.h"

// clang-format off
// The natural size of a preloaded SVG, as width * 65536 + height; 0 when the
// page did not preload it.
EM_JS(int, tl_svg_size, (const char* text, int length), {
  const svgs = Module.twinlanesSvgs;
  const image = svgs && svgs.get(UTF8ToString(text, length));
  if (!image) return 0;
  return Math.min(image.naturalWidth, 65535) * 65536 + Math.min(image.naturalHeight, 65535);
});

EM_JS(void, tl_svg_draw, (int id, const char* text, int length), {
  const image = Module.twinlanesSvgs.get(UTF8ToString(text, length));
  const canvas = Module.twinlanesImages.canvases.get(id);
  canvas.getContext('2d').drawImage(image, 0, 0, canvas.width, canvas.height);
});

EM_JS(void, tl_svg_fill, (int id, double x, double y, double w, double h, double r, double g,
                          double b, double a), {
  const ctx = Module.twinlanesImages.canvases.get(id).getContext('2d');
  ctx.clearRect(x, y, w, h);
  ctx.fillStyle = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                  Math.round(b * 255) + ',' + a + ')';
  ctx.fillRect(x, y, w, h);
});

// clang-format on

namespace kit::web {
namespace {

constexpr int kMaxSide = 4096;

bool validSize(int width, int height) {
  return width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide;
}

bool wellFormed(const PixelBuffer& pixels) {
  return validSize(pixels.width, pixels.height) &&
         pixels.rgba.size() == static_cast<size_t>(pixels.width) * pixels.height * 4;
}

Result<std::string> encode(const PixelBuffer& pixels, const char* type, double quality) {
  if (!wellFormed(pixels))
    return Error{"cannot encode an image of " + std::to_string(pixels.width) + " x " +
                 std::to_string(pixels.height) + " pixels"};
  OffscreenCanvas canvas(pixels.width, pixels.height);
  canvas.put(pixels.rgba);
  std::string bytes = canvas.encode(type, quality);
  if (bytes.empty())
    return Error{std::string("the browser cannot encode ") + type};
  return bytes;
}

class BrowserCanvas final : public ImageCanvas {
 public:
  BrowserCanvas(int width, int height) : canvas_(width, height) {}

  void fillRect(const Rect& rect, const Color& color) override {
    tl_svg_fill(canvas_.id(), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height,
                  color.red, color.green, color.blue, color.alpha);
  }

  void drawPixels(const PixelBuffer& pixels, const Rect& rect, BlendMode mode,
                  double alpha) override {
    if (!wellFormed(pixels))
      return;
    OffscreenCanvas source(pixels.width, pixels.height);
    source.put(pixels.rgba);
    canvas_.draw(source, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height,
                 compositeOperationOf(mode), std::clamp(alpha, 0.0, 1.0));
  }

  PixelBuffer pixels() const override {
    return {canvas_.width(), canvas_.height(), canvas_.get()};
  }

 private:
  OffscreenCanvas canvas_;
};

}  // namespace

Result<PixelBuffer> CanvasImages::decode(std::string_view bytes) {
  (void)bytes;
  return Error{"the browser decodes PNG and JPEG only asynchronously; use SVG art"};
}

Result<PixelBuffer> CanvasImages::rasterizeSvg(std::string_view svg, int width, int height) {
  if (!validSize(width, height))
    return Error{"cannot rasterise an SVG at " + std::to_string(width) + " x " +
                 std::to_string(height) + " pixels"};
  const int natural = tl_svg_size(svg.data(), static_cast<int>(svg.size()));
  if (natural == 0)
    return Error{"this SVG was not among the page's preloaded images"};
  const double naturalWidth = natural / 65536;
  const double naturalHeight = natural % 65536;
  if (naturalWidth <= 0 || naturalHeight <= 0)
    return Error{"the SVG has no size"};
  // Fit the box, aspect kept: one side may come out shorter than asked.
  const double scale = std::min(width / naturalWidth, height / naturalHeight);
  const int w = std::max(1, static_cast<int>(std::lround(naturalWidth * scale)));
  const int h = std::max(1, static_cast<int>(std::lround(naturalHeight * scale)));
  OffscreenCanvas canvas(std::min(w, width), std::min(h, height));
  tl_svg_draw(canvas.id(), svg.data(), static_cast<int>(svg.size()));
  return PixelBuffer{canvas.width(), canvas.height(), canvas.get()};
}

Result<std::string> CanvasImages::encodePng(const PixelBuffer& pixels) {
  return encode(pixels, "image/png", 1.0);
}

Result<std::string> CanvasImages::encodeJpeg(const PixelBuffer& pixels, int quality) {
  return encode(pixels, "image/jpeg", std::clamp(quality, 1, 100) / 100.0);
}

std::unique_ptr<ImageCanvas> CanvasImages::makeCanvas(int width, int height) {
  return std::make_unique<BrowserCanvas>(std::clamp(width, 1, kMaxSide),
                                         std::clamp(height, 1, kMaxSide));
}

}  // namespace kit::web
