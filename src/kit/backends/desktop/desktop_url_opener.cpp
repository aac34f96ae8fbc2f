#include "kit/backends/desktop/desktop_url_opener.h"

#include <SDL.h>

#include <algorithm>
#include <cctype>
#include <string_view>

#include "kit/foundation/strings.h"

namespace kit {

namespace {

constexpr std::string_view kStoreScheme = "itms-apps://";

}  // namespace

std::string DesktopUrlOpener::desktopFormOf(const std::string& url) {
  if (startsWithIgnoringCase(url, kStoreScheme))
    return "https://" + url.substr(kStoreScheme.size());
  return url;
}

bool DesktopUrlOpener::canOpen(const std::string& url) {
  const std::string form = desktopFormOf(url);
  // The desktop opener takes the URL as one argument; spaces, control bytes
  // and a leading '-' could still be misread by the handler it starts.
  const bool clean = std::none_of(form.begin(), form.end(), [](char c) {
    auto u = static_cast<unsigned char>(c);
    return u <= 0x20 || u == 0x7f;
  });
  const bool webPage =
      (startsWithIgnoringCase(form, "https://") || startsWithIgnoringCase(form, "http://")) &&
      form.find_first_not_of('/', form.find(':') + 1) != std::string::npos;
  return clean && (webPage || (startsWithIgnoringCase(form, "mailto:") && form.size() > 7));
}

bool DesktopUrlOpener::openURL(const std::string& url) {
  if (!canOpen(url))
    return false;
  return SDL_OpenURL(desktopFormOf(url).c_str()) == 0;
}

}  // namespace kit
