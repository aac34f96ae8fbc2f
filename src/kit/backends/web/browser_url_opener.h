#pragma once

#include <string>

#include "kit/foundation/url_opener.h"

namespace kit::web {

// Opens URLs in a new browser tab. Store links (itms-apps://host/path) become
// their https web page first; then only http, https and mailto URLs are
// opened (a mailto link goes to the browser's mail handler in place).
class BrowserUrlOpener final : public UrlOpener {
 public:
  bool openURL(const std::string& url) override;
};

}  // namespace kit::web
