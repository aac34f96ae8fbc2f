// kit::rasterizeSvg for the browser build: the page's preloaded SVG drawn by
// the browser at the pixel size asked for. Without a page (node) the image
// keeps its size with transparent pixels, which is all headless runs need.
#include <algorithm>
#include <cmath>

#include "kit/backends/web/browser_canvas.h"
#include "kit/backends/web/canvas_images.h"
#include "kit/backends/web/web_pixels.h"
#include "kit/ui/svg_image.h"

namespace kit {

std::optional<Image> rasterizeSvg(std::string_view svg, Size size, double scale,
                                  std::string* error) {
  auto fail = [error](std::string why) -> std::optional<Image> {
    if (error)
      *error = std::move(why);
    return std::nullopt;
  };
  if (svg.size() > kMaxSvgBytes)
    return fail("SVG of " + std::to_string(svg.size()) + " bytes is larger than the limit");
  if (svg.find("<svg") == std::string_view::npos)
    return fail("not a usable SVG: no <svg> element");
  if (!(std::isfinite(scale) && scale > 0))
    scale = 1;
  const double w = std::round(size.width * scale), h = std::round(size.height * scale);
  if (!(w >= 1 && h >= 1 && w <= kMaxSvgPixelSide && h <= kMaxSvgPixelSide))
    return fail("no usable size to draw the SVG at");
  int width = static_cast<int>(w), height = static_cast<int>(h);
  std::vector<uint8_t> rgba;
  if (web::hasCanvas()) {
    // Fit the box with the drawing's aspect kept.
    const std::optional<Size> natural = web::preloadedSvgSize(svg);
    if (!natural)
      return fail("this SVG was not among the page's preloaded images");
    const double fit = std::min(w / natural->width, h / natural->height);
    width = std::clamp(static_cast<int>(std::lround(natural->width * fit)), 1, width);
    height = std::clamp(static_cast<int>(std::lround(natural->height * fit)), 1, height);
    Result<PixelBuffer> drawn = web::drawPreloadedSvg(svg, width, height);
    if (!drawn)
      return fail(drawn.error());
    rgba = std::move(drawn->rgba);
  } else {
    rgba.assign(static_cast<size_t>(width) * height * 4, 0);
  }
  return Image::fromPngData(web::rawImageBytes(width, height, rgba), scale, error);
}

// The page rasterises on the main thread and keeps nothing per thread.
void releaseSvgThreadState() {}

}  // namespace kit
