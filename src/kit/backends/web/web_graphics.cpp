// The browser's graphics: canvas text and pixels.
#include "kit/backends/web/web_image_system.h"
#include "kit/backends/web/web_text_system.h"
#include "kit/foundation/graphics.h"
#include "kit/platform/backend.h"

namespace kit {

std::shared_ptr<Graphics> makeBackendGraphics() {
  return std::make_shared<Graphics>(std::make_unique<WebTextSystem>(),
                                    std::make_unique<WebImageSystem>());
}

}  // namespace kit
