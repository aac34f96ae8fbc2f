// kit::ImageContext for the browser build: pixels kept in wasm memory;
// fills written directly, images composited by a canvas with the blend
// mode's globalCompositeOperation (the tint operations: overlay, then
// destination-in). Without a page (node) images are drawn as copies, which
// keeps sizes and coverage for headless runs.
#include <algorithm>
#include <cmath>

#include "kit/backends/web/browser_canvas.h"
#include "kit/backends/web/web_pixels.h"
#include "kit/ui/image_context.h"

namespace kit {

struct ImageContext::State {
  web::Pixels pixels;
};

namespace {

uint8_t byte(double unit) {
  return static_cast<uint8_t>(std::lround(std::clamp(unit, 0.0, 1.0) * 255));
}

}  // namespace

ImageContext::ImageContext(Size size, double scale) : state_(std::make_unique<State>()) {
  state_->pixels = web::makePixels(size, scale);
}

ImageContext::~ImageContext() = default;

Size ImageContext::size() const {
  return state_->pixels.size;
}

double ImageContext::scale() const {
  return state_->pixels.scale;
}

void ImageContext::fillRect(const Rect& rect, const Color& color) {
  web::Pixels& p = state_->pixels;
  const double s = p.scale;
  const int x0 = std::clamp(static_cast<int>(std::lround(rect.origin.x * s)), 0, p.width);
  const int y0 = std::clamp(static_cast<int>(std::lround(rect.origin.y * s)), 0, p.height);
  const int x1 = std::clamp(static_cast<int>(std::lround(rect.maxX() * s)), 0, p.width);
  const int y1 = std::clamp(static_cast<int>(std::lround(rect.maxY() * s)), 0, p.height);
  const uint8_t rgba[4] = {byte(color.red), byte(color.green), byte(color.blue), byte(color.alpha)};
  for (int y = y0; y < y1; ++y) {
    uint8_t* row = p.rgba.data() + static_cast<size_t>(y) * p.width * 4;
    for (int x = x0; x < x1; ++x)
      std::copy(rgba, rgba + 4, row + x * 4);
  }
}

void ImageContext::drawImage(const Image& image, const Rect& rect, BlendMode mode, double alpha) {
  web::Pixels& p = state_->pixels;
  const web::Pixels& source = *image.impl_;
  const double s = p.scale;
  const double x = rect.origin.x * s, y = rect.origin.y * s;
  const double w = rect.size.width * s, h = rect.size.height * s;
  if (!(w > 0 && h > 0 && std::isfinite(x) && std::isfinite(y) && std::isfinite(w) &&
        std::isfinite(h)) ||
      source.width == 0 || p.width == 0)
    return;
  if (!web::hasCanvas())
    return;
  web::OffscreenCanvas target(p.width, p.height);
  target.put(p.rgba);
  web::OffscreenCanvas drawn(source.width, source.height);
  drawn.put(source.rgba);
  target.draw(drawn, x, y, w, h, web::compositeOperationOf(mode), std::clamp(alpha, 0.0, 1.0));
  p.rgba = target.get();
}

Image ImageContext::takeImage() {
  auto impl = std::make_shared<Image::Impl>();
  static_cast<web::Pixels&>(*impl) = state_->pixels;
  return Image(std::move(impl));
}

}  // namespace kit
