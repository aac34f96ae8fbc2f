// The desktop's graphics: Pango text, Cairo and SDL_image pixels.
#include "kit/backends/desktop/cairo_image_system.h"
#include "kit/backends/desktop/pango_text_system.h"
#include "kit/foundation/graphics.h"
#include "kit/platform/backend.h"

namespace kit {

std::shared_ptr<Graphics> makeBackendGraphics() {
  return std::make_shared<Graphics>(std::make_unique<PangoTextSystem>(),
                                    std::make_unique<CairoImageSystem>());
}

}  // namespace kit
