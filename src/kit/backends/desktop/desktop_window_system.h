#pragma once

#include "kit/backends/desktop/sdl_image_codec.h"
#include "kit/platform/platform_window.h"

namespace kit {

// The desktop's windows (RenderWindow on SDL's software renderer) and images
// (SDL_image). Owned by the program's main; outlives the application.
class DesktopWindowSystem final : public WindowSystem {
 public:
  Result<std::unique_ptr<PlatformWindow>> open(const WindowOptions& options) override;
  ImageCodec& imageCodec() override { return codec_; }

 private:
  SdlImageCodec codec_;
};

}  // namespace kit
