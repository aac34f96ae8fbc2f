#pragma once

#include "kit/backends/web/canvas_images.h"
#include "kit/platform/image_system.h"

namespace kit {

// The browser's pixel work: compositing, panels, spinners and encoding by
// offscreen canvases (the blend modes as globalCompositeOperation), SVG
// drawn from the page's preloaded images, fills written in wasm memory.
// The browser decodes PNG and JPEG only asynchronously, so only pictures the
// page decoded as they were downloaded are decoded; others are refused with
// a reason (the art is SVG). Without a page (node) nothing is drawn:
// bitmaps keep their sizes, and SVGs come out transparent at the size asked
// for, which is all headless runs need. Main thread only (the page has no
// other).
class WebImageSystem final : public ImageSystem {
 public:
  Result<PixelBuffer> decode(std::string_view bytes) override { return canvas_.decode(bytes); }
  Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width, int height) override;

  int largestSide() const override { return 16384; }

  Result<Bitmap> decodePng(std::string_view bytes) override;
  Result<std::string> encodePng(const Bitmap& pixels) override;
  std::optional<std::string> encodeJpeg(const Bitmap& pixels, double quality) override;
  void fill(Bitmap& target, const Rect& rect, const Color& color) override;
  void composite(Bitmap& target, const Bitmap& source, const Composite& how) override;
  PanelBitmap rasterizePanel(const PanelStyle& style, double scale) override;
  PanelBitmap rasterizeSpinner(double side, double scale, Color color, int spokes) override;

 private:
  web::CanvasImages canvas_;
};

}  // namespace kit
