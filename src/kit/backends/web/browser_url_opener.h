#pragma once

#include <string>

#include "kit/foundation/url_opener.h"

namespace kit::web {

// Opens web pages in a new browser tab and mailto: links in place (the
// browser hands them to the mail program or web mail). Store links
// (itms-apps://host/path) become their https web page first; other schemes,
// and URLs with spaces or control characters, are refused. Every URL handed
// on is also kept in Module.twinlanesOpened for tests and tools.
class BrowserUrlOpener final : public UrlOpener {
 public:
  bool openURL(const std::string& url) override;
  // The URL the browser is given for `url`.
  static std::string pageFormOf(const std::string& url);
  // Whether openURL would hand `url` (in its page form) on.
  static bool canOpen(const std::string& url);
};

}  // namespace kit::web
