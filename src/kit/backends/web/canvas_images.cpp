#include "kit/backends/web/canvas_images.h"

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>

#include "kit/backends/web/browser_canvas.h"
#include "kit/backends/web/downloaded_pictures.h"

// clang-format off
// The natural size of a preloaded SVG, as width * 65536 + height; 0 when the
// page did not preload it.
EM_JS(int, tl_svg_size, (const char* text, int length), {
  const svgs = Module.twinlanesSvgs;
  const image = svgs && svgs.get(UTF8ToString(text, length));
  if (!image) return 0;
  return Math.min(image.naturalWidth, 32767) * 65536 + Math.min(image.naturalHeight, 65535);
});

EM_JS(void, tl_svg_draw, (int id, const char* text, int length), {
  const image = Module.twinlanesSvgs.get(UTF8ToString(text, length));
  const canvas = Module.twinlanesImages.canvases.get(id);
  canvas.getContext('2d').drawImage(image, 0, 0, canvas.width, canvas.height);
});
// clang-format on

namespace kit::web {
namespace {

constexpr int kMaxSide = 4096;

}  // namespace

std::optional<Size> preloadedSvgSize(std::string_view svg) {
  if (!hasCanvas())
    return std::nullopt;
  const int natural = tl_svg_size(svg.data(), static_cast<int>(svg.size()));
  if (natural <= 0 || natural / 65536 == 0 || natural % 65536 == 0)
    return std::nullopt;
  return Size{static_cast<double>(natural / 65536), static_cast<double>(natural % 65536)};
}

Result<PixelBuffer> drawPreloadedSvg(std::string_view svg, int width, int height) {
  if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide)
    return Error{"cannot rasterise an SVG at " + std::to_string(width) + " x " +
                 std::to_string(height) + " pixels"};
  if (!preloadedSvgSize(svg))
    return Error{"this SVG was not among the page's preloaded images"};
  OffscreenCanvas canvas(width, height);
  tl_svg_draw(canvas.id(), svg.data(), static_cast<int>(svg.size()));
  return PixelBuffer{width, height, canvas.get()};
}

Result<PixelBuffer> CanvasImages::decode(std::string_view bytes) {
  if (std::optional<PixelBuffer> downloaded = findDownloadedPicture(bytes))
    return std::move(*downloaded);
  return Error{
      "the browser decodes PNG and JPEG only asynchronously: it draws only pictures downloaded "
      "with fetch(), decoded as they arrived"};
}

Result<PixelBuffer> CanvasImages::rasterizeSvg(std::string_view svg, int width, int height) {
  const std::optional<Size> natural = preloadedSvgSize(svg);
  if (!natural)
    return Error{"this SVG was not among the page's preloaded images"};
  // A side of 0 follows from the other and the aspect ratio; the drawing
  // fits the box with its aspect kept.
  const double w = natural->width, h = natural->height;
  double scale = 0;
  if (width > 0 && height > 0)
    scale = std::min(width / w, height / h);
  else if (width > 0)
    scale = width / w;
  else if (height > 0)
    scale = height / h;
  if (!(scale > 0))
    return Error{"no usable size to draw the SVG at"};
  return drawPreloadedSvg(svg, std::max(1, static_cast<int>(std::lround(w * scale))),
                          std::max(1, static_cast<int>(std::lround(h * scale))));
}

}  // namespace kit::web
