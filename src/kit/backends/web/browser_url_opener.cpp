#include "kit/backends/web/browser_url_opener.h"

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cctype>

// clang-format off
EM_JS(void, tl_open_url, (const char* url, bool inPlace), {
  const target = UTF8ToString(url);
  (Module.twinlanesOpened || (Module.twinlanesOpened = [])).push(target);
  if (typeof window === 'undefined') return;
  window.open(target, inPlace ? '_self' : '_blank', 'noopener');
});
// clang-format on

namespace kit::web {
namespace {

constexpr std::string_view kStoreScheme = "itms-apps://";

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         std::equal(prefix.begin(), prefix.end(), text.begin(), [](char a, char b) {
           return std::tolower(static_cast<unsigned char>(a)) ==
                  std::tolower(static_cast<unsigned char>(b));
         });
}

}  // namespace

std::string BrowserUrlOpener::pageFormOf(const std::string& url) {
  if (startsWithNoCase(url, kStoreScheme))
    return "https://" + url.substr(kStoreScheme.size());
  return url;
}

bool BrowserUrlOpener::canOpen(const std::string& url) {
  const bool clean = std::none_of(url.begin(), url.end(), [](char c) {
    const auto u = static_cast<unsigned char>(c);
    return u <= 0x20 || u == 0x7f;
  });
  const bool webPage = (startsWithNoCase(url, "https://") || startsWithNoCase(url, "http://")) &&
                       url.find_first_not_of('/', url.find(':') + 1) != std::string::npos;
  return clean && (webPage || (startsWithNoCase(url, "mailto:") && url.size() > 7));
}

bool BrowserUrlOpener::openURL(const std::string& url) {
  const std::string target = pageFormOf(url);
  if (!canOpen(target))
    return false;
  tl_open_url(target.c_str(), startsWithNoCase(target, "mailto:"));
  return true;
}

}  // namespace kit::web
