#pragma once

#include <string>
#include <vector>

namespace kit {

// The shared application's openURL:. Returns whether the URL was handed on.
class UrlOpener {
 public:
  virtual ~UrlOpener() = default;
  virtual bool openURL(const std::string& url) = 0;
};

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

// Records every URL and opens nothing, for tests and headless runs.
class RecordingUrlOpener final : public UrlOpener {
 public:
  bool openURL(const std::string& url) override {
    opened.push_back(url);
    return true;
  }
  std::vector<std::string> opened;
};

}  // namespace kit
