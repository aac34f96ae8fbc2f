#include "kit/backends/web/canvas_images.h"

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>

#include "kit/backends/web/js_bytes.h"

// Canvases live in Module.twinlanesImages by id. Pixels cross as straight
// RGBA (ImageData's own layout).
// clang-format off
EM_JS(int, tl_image_canvas, (int width, int height), {
  const store = Module.twinlanesImages || (Module.twinlanesImages = { canvases: new Map(), nextId: 1 });
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const id = store.nextId++;
  store.canvases.set(id, canvas);
  return id;
});

EM_JS(void, tl_image_release, (int id), { Module.twinlanesImages.canvases.delete(id); });

EM_JS(void, tl_image_put, (int id, const uint8_t* rgba, int width, int height), {
  const canvas = Module.twinlanesImages.canvases.get(id);
  const pixels = new Uint8ClampedArray(width * height * 4);
  pixels.set(HEAPU8.subarray(rgba, rgba + pixels.length));
  canvas.getContext('2d').putImageData(new ImageData(pixels, width, height), 0, 0);
});

EM_JS(void, tl_image_get, (int id, uint8_t* out), {
  const canvas = Module.twinlanesImages.canvases.get(id);
  HEAPU8.set(canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data, out);
});

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

EM_JS(bool, tl_image_encode, (int id, const char* type, double quality), {
  const url = Module.twinlanesImages.canvases.get(id).toDataURL(UTF8ToString(type), quality);
  const comma = url.indexOf(',');
  if (comma < 0 || !url.startsWith('data:' + UTF8ToString(type))) return false;
  const binary = atob(url.substring(comma + 1));
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
  Module.twinlanesStash = bytes;
  return true;
});

EM_JS(void, tl_image_fill, (int id, double x, double y, double w, double h, double r, double g,
                            double b, double a), {
  const ctx = Module.twinlanesImages.canvases.get(id).getContext('2d');
  ctx.clearRect(x, y, w, h);
  ctx.fillStyle = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                  Math.round(b * 255) + ',' + a + ')';
  ctx.fillRect(x, y, w, h);
});

// Draws canvas `source` stretched to the rectangle with a compositing
// operation; the clip keeps the unbounded operations (destination-in and
// friends) from touching anything outside the rectangle.
EM_JS(void, tl_image_draw, (int id, int source, double x, double y, double w, double h,
                            const char* operation, double alpha), {
  const canvases = Module.twinlanesImages.canvases;
  const ctx = canvases.get(id).getContext('2d');
  ctx.save();
  ctx.beginPath();
  ctx.rect(x, y, w, h);
  ctx.clip();
  const op = UTF8ToString(operation);
  if (op === 'clear') {
    ctx.clearRect(x, y, w, h);
  } else {
    ctx.globalCompositeOperation = op;
    ctx.globalAlpha = alpha;
    ctx.drawImage(canvases.get(source), x, y, w, h);
  }
  ctx.restore();
});
// clang-format on

namespace kit::web {
namespace {

constexpr int kMaxSide = 4096;

const char* operationOf(BlendMode mode) {
  switch (mode) {
    case BlendMode::Normal:
      return "source-over";
    case BlendMode::Multiply:
      return "multiply";
    case BlendMode::Screen:
      return "screen";
    case BlendMode::Overlay:
      return "overlay";
    case BlendMode::Darken:
      return "darken";
    case BlendMode::Lighten:
      return "lighten";
    case BlendMode::ColorDodge:
      return "color-dodge";
    case BlendMode::ColorBurn:
      return "color-burn";
    case BlendMode::SoftLight:
      return "soft-light";
    case BlendMode::HardLight:
      return "hard-light";
    case BlendMode::Difference:
      return "difference";
    case BlendMode::Exclusion:
      return "exclusion";
    case BlendMode::Hue:
      return "hue";
    case BlendMode::Saturation:
      return "saturation";
    case BlendMode::Color:
      return "color";
    case BlendMode::Luminosity:
      return "luminosity";
    case BlendMode::Clear:
      return "clear";
    case BlendMode::Copy:
      return "copy";
    case BlendMode::SourceIn:
      return "source-in";
    case BlendMode::SourceOut:
      return "source-out";
    case BlendMode::SourceAtop:
      return "source-atop";
    case BlendMode::DestinationOver:
      return "destination-over";
    case BlendMode::DestinationIn:
      return "destination-in";
    case BlendMode::DestinationOut:
      return "destination-out";
    case BlendMode::DestinationAtop:
      return "destination-atop";
    case BlendMode::Xor:
      return "xor";
    // Canvas has no plus-darker; multiply is the closest darkening mode.
    case BlendMode::PlusDarker:
      return "multiply";
    case BlendMode::PlusLighter:
      return "lighter";
  }
  return "source-over";
}

bool validSize(int width, int height) {
  return width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide;
}

// One canvas on the JavaScript side, released with its owner.
class JsCanvas {
 public:
  JsCanvas(int width, int height)
      : id_(tl_image_canvas(width, height)), width_(width), height_(height) {}
  ~JsCanvas() { tl_image_release(id_); }
  JsCanvas(const JsCanvas&) = delete;
  JsCanvas& operator=(const JsCanvas&) = delete;

  int id() const { return id_; }
  void put(const PixelBuffer& pixels) { tl_image_put(id_, pixels.rgba.data(), width_, height_); }
  PixelBuffer get() const {
    PixelBuffer out{width_, height_,
                    std::vector<uint8_t>(static_cast<size_t>(width_) * height_ * 4)};
    tl_image_get(id_, out.rgba.data());
    return out;
  }

 private:
  int id_;
  int width_;
  int height_;
};

bool wellFormed(const PixelBuffer& pixels) {
  return validSize(pixels.width, pixels.height) &&
         pixels.rgba.size() == static_cast<size_t>(pixels.width) * pixels.height * 4;
}

Result<std::string> encode(const PixelBuffer& pixels, const char* type, double quality) {
  if (!wellFormed(pixels))
    return Error{"cannot encode an image of " + std::to_string(pixels.width) + " x " +
                 std::to_string(pixels.height) + " pixels"};
  JsCanvas canvas(pixels.width, pixels.height);
  canvas.put(pixels);
  if (!tl_image_encode(canvas.id(), type, quality))
    return Error{std::string("the browser cannot encode ") + type};
  return takeStash();
}

class BrowserCanvas final : public ImageCanvas {
 public:
  BrowserCanvas(int width, int height) : canvas_(width, height) {}

  void fillRect(const Rect& rect, const Color& color) override {
    tl_image_fill(canvas_.id(), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height,
                  color.red, color.green, color.blue, color.alpha);
  }

  void drawPixels(const PixelBuffer& pixels, const Rect& rect, BlendMode mode,
                  double alpha) override {
    if (!wellFormed(pixels))
      return;
    JsCanvas source(pixels.width, pixels.height);
    source.put(pixels);
    tl_image_draw(canvas_.id(), source.id(), rect.origin.x, rect.origin.y, rect.size.width,
                  rect.size.height, operationOf(mode), std::clamp(alpha, 0.0, 1.0));
  }

  PixelBuffer pixels() const override { return canvas_.get(); }

 private:
  JsCanvas canvas_;
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
  JsCanvas canvas(std::min(w, width), std::min(h, height));
  tl_svg_draw(canvas.id(), svg.data(), static_cast<int>(svg.size()));
  return canvas.get();
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
