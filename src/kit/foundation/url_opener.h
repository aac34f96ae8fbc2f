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
