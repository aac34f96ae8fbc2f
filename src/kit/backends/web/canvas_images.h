#pragma once

#include <optional>
#include <string_view>

#include "kit/foundation/geometry.h"
#include "kit/platform/image_codec.h"

namespace kit::web {

// The renderer's image files through the browser: SVG drawn by the browser's
// own renderer onto a canvas at the pixel size asked for, so art stays crisp
// at any device pixel ratio.
//
// The browser decodes images only asynchronously, so the page decodes every
// SVG among the resources before the game starts (twinlanes-page.js keeps
// them by their text); rasterizeSvg draws those. decode finds PNG and JPEG
// pictures the page decoded as they were downloaded (downloaded_pictures.h).
// Other images are refused with a reason rather than waited for. Main thread
// only.
class CanvasImages final : public ImageCodec {
 public:
  Result<PixelBuffer> decode(std::string_view bytes) override;
  Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width, int height) override;
};

// The SVG's drawing drawn onto a canvas of exactly width × height pixels;
// an error when the page did not preload it (or there is no page).
Result<PixelBuffer> drawPreloadedSvg(std::string_view svg, int width, int height);
// The preloaded SVG's natural size in pixels; nothing when it is not preloaded.
std::optional<Size> preloadedSvgSize(std::string_view svg);

}  // namespace kit::web
