#pragma once

#include <string>

#include "kit/foundation/url_opener.h"

namespace kit {

// Hands URLs to the desktop (never through a shell). Store links
// (itms-apps://host/path) become their https web page first; then only
// http, https and mailto URLs are handed on, others are refused (false).
// True means the desktop's opener was started, not that a page appeared.
class DesktopUrlOpener final : public UrlOpener {
 public:
  bool openURL(const std::string& url) override;
  // The URL the desktop is given for `url`.
  static std::string desktopFormOf(const std::string& url);
  // Whether openURL would hand `url` on.
  static bool canOpen(const std::string& url);
};

}  // namespace kit
