#include "kit/backends/web/page_hooks.h"

#include <emscripten/emscripten.h>

namespace kit::web {

void firstFrameShown() {
  EM_ASM({
    if (Module.twinlanesFirstFrame)
      Module.twinlanesFirstFrame();
  });
}

}  // namespace kit::web
