#include "kit/backends/desktop/desktop_url_opener.h"

#include <SDL.h>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace kit {

namespace {

bool startsWithNoCase(const std::string& text, std::string_view prefix) {
  if (text.size() < prefix.size())
    return false;
  return std::equal(prefix.begin(), prefix.end(), text.begin(), [](char a, char b) {
    return a == std::tolower(static_cast<unsigned char>(b));
  });
}

constexpr std::string_view kStoreScheme = "itms-apps://";

}  // namespace

std::string DesktopUrlOpener::desktopFormOf(const std::string& url) {
  if (startsWithNoCase(url, kStoreScheme))
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
  const bool webPage = (startsWithNoCase(form, "https://") || startsWithNoCase(form, "http://")) &&
                       form.find_first_not_of('/', form.find(':') + 1) != std::string::npos;
  return clean && (webPage || (startsWithNoCase(form, "mailto:") && form.size() > 7));
}

bool DesktopUrlOpener::openURL(const std::string& url) {
  if (!canOpen(url))
    return false;
  return SDL_OpenURL(desktopFormOf(url).c_str()) == 0;
}

}  // namespace kit
