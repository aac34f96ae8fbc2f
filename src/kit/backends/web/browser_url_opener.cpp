#include "kit/backends/web/browser_url_opener.h"

#include <emscripten/emscripten.h>

// clang-format off
EM_JS(void, tl_open_url, (const char* url, bool mail), {
  const target = UTF8ToString(url);
  (Module.twinlanesOpened || (Module.twinlanesOpened = [])).push(target);
  if (mail) {
    window.location.href = target;
  } else {
    window.open(target, '_blank', 'noopener');
  }
});
// clang-format on

namespace kit::web {

bool BrowserUrlOpener::openURL(const std::string& url) {
  // The desktop's rules decide what a URL becomes and whether it may go.
  const std::string target = DesktopUrlOpener::desktopFormOf(url);
  if (!DesktopUrlOpener::canOpen(target))
    return false;
  tl_open_url(target.c_str(), target.rfind("mailto:", 0) == 0);
  return true;
}

}  // namespace kit::web
