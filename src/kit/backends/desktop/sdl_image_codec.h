#pragma once

#include "kit/platform/image_codec.h"

namespace kit {

// SDL_image's PNG and JPEG decoders and its SVG rasteriser.
class SdlImageCodec final : public ImageCodec {
 public:
  Result<PixelBuffer> decode(std::string_view bytes) override;
  Result<PixelBuffer> rasterizeSvg(std::string_view svg, int width, int height) override;
};

}  // namespace kit
