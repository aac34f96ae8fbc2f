// kit::systemLanguages for the browser build: navigator.languages
// (under node: LANG, as the desktop reads it).
#include <emscripten/emscripten.h>

#include <algorithm>
#include <sstream>

#include "kit/backends/web/js_bytes.h"
#include "kit/foundation/bundle.h"
#include "kit/platform/backend.h"

// clang-format off
EM_JS(void, tl_languages, (), {
  let list = [];
  if (typeof navigator !== 'undefined' && navigator.languages) list = navigator.languages;
  else if (typeof process !== 'undefined' && process.env.LANG) list = [process.env.LANG.split('.')[0]];
  Module.twinlanesStash = new TextEncoder().encode(list.join('\n'));
});
// clang-format on

namespace kit {

std::vector<std::string> systemLanguages() {
  tl_languages();
  std::vector<std::string> out;
  std::istringstream lines(web::takeStash());
  for (std::string code; std::getline(lines, code);) {
    std::replace(code.begin(), code.end(), '_', '-');
    if (code.empty() || code == "C" || code == "POSIX")
      continue;
    // Chinese texts are told apart by script, and the script follows from
    // the region ("zh-TW" is "zh-Hant-TW").
    if (code == "zh" || (code.rfind("zh-", 0) == 0 && code.size() == 5)) {
      const std::string region = code.size() == 5 ? code.substr(3) : "";
      const bool traditional = region == "TW" || region == "HK" || region == "MO";
      code = std::string("zh-") + (traditional ? "Hant" : "Hans") +
             (region.empty() ? "" : "-" + region);
    }
    if (Bundle::isSafeName(code) && std::find(out.begin(), out.end(), code) == out.end())
      out.push_back(code);
  }
  return out;
}

}  // namespace kit
