#include "kit/backends/web/js_bytes.h"

#include <emscripten/emscripten.h>

// clang-format off
EM_JS(int, tl_stash_size, (), {
  const s = Module.twinlanesStash;
  return s ? s.length : 0;
});

EM_JS(void, tl_stash_take, (char* out), {
  const s = Module.twinlanesStash;
  if (s) HEAPU8.set(s, out);
  Module.twinlanesStash = null;
});
// clang-format on

namespace kit::web {

std::string takeStash() {
  std::string bytes(static_cast<size_t>(tl_stash_size()), '\0');
  tl_stash_take(bytes.data());
  return bytes;
}

}  // namespace kit::web
