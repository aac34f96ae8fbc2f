#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kit/platform/image_codec.h"

namespace kit::web {

// Images through the browser: SVG drawn by the browser's own renderer onto a
// canvas at the pixel size asked for (so art stays crisp at any device pixel
// ratio), PNG and JPEG encoded by canvas.toDataURL, and composing canvases
// whose blend modes are Canvas 2D's globalCompositeOperation.
//
// The browser decodes images only asynchronously, so the page decodes every
// SVG among the resources before the game starts (twinlanes-page.js keeps
// them by their text); rasterizeSvg draws those. An SVG or PNG that was not
// among them (a served ad creative) is refused with a reason rather than
// waited for. Main thread only.
class CanvasImages final : public ImageCodec {
 public:
  Result<PixelBuffer> decode(std::string_view bytes) override;
  Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width, int height) override;
  Result<std::string> encodePng(const PixelBuffer& pixels) override;
  Result<std::string> encodeJpeg(const PixelBuffer& pixels, int quality) override;
  std::unique_ptr<ImageCanvas> makeCanvas(int width, int height) override;
};

}  // namespace kit::web
