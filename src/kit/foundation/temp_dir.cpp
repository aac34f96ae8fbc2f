#include "kit/foundation/temp_dir.h"

#include <stdlib.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kit {

namespace fs = std::filesystem;

TempDir::TempDir(const std::string& prefix, const fs::path& parent) {
  std::error_code ec;
  fs::path base = parent.empty() ? fs::temp_directory_path(ec) : parent;
  if (ec)
    base = "/tmp";
  std::string pattern = (base / (prefix + "-XXXXXX")).string();
  if (!::mkdtemp(pattern.data())) {
    throw std::system_error(errno, std::generic_category(), "creating a folder like " + pattern);
  }
  path_ = pattern;
}

TempDir::~TempDir() {
  removeNow();
}

TempDir::TempDir(TempDir&& other) noexcept
    : path_(std::exchange(other.path_, {})), keep_(other.keep_) {}

TempDir& TempDir::operator=(TempDir&& other) noexcept {
  if (this != &other) {
    removeNow();
    path_ = std::exchange(other.path_, {});
    keep_ = other.keep_;
  }
  return *this;
}

void TempDir::removeNow() {
  if (path_.empty() || keep_)
    return;
  std::error_code ec;
  fs::remove_all(path_, ec);
  path_.clear();
}

}  // namespace kit
