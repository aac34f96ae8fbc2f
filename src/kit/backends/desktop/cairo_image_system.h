#pragma once

#include "kit/backends/desktop/sdl_image_codec.h"
#include "kit/platform/image_system.h"

namespace kit {

// The desktop's pixel work: Cairo draws on the kit's bitmaps in place
// (compositing with Cairo's operators, PNG, panels and spinners), SDL_image
// decodes, rasterises SVG (librsvg) and encodes JPEG. Keeps no state between
// calls, so any thread may use it.
class CairoImageSystem final : public ImageSystem {
 public:
  Result<PixelBuffer> decode(std::string_view bytes) override { return codec_.decode(bytes); }
  Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width, int height) override {
    return codec_.rasterizeSvg(svg, width, height);
  }

  // Cairo's own limit on an image surface's side.
  int largestSide() const override { return 32767; }

  Result<Bitmap> decodePng(std::string_view bytes) override;
  Result<std::string> encodePng(const Bitmap& pixels) override;
  std::optional<std::string> encodeJpeg(const Bitmap& pixels, double quality) override;
  void fill(Bitmap& target, const Rect& rect, const Color& color) override;
  void composite(Bitmap& target, const Bitmap& source, const Composite& how) override;
  PanelBitmap rasterizePanel(const PanelStyle& style, double scale) override;
  PanelBitmap rasterizeSpinner(double side, double scale, Color color, int spokes) override;
  void releaseThreadState() override;

 private:
  SdlImageCodec codec_;
};

}  // namespace kit
