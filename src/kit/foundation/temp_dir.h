#pragma once

#include <filesystem>
#include <string>

namespace kit {

// A fresh private folder (mode 0700) under the system's temporary folder (or
// a given parent), removed with everything in it when the TempDir goes,
// unless keep() was called. Tests and the headless runner keep preferences
// in one.
class TempDir {
 public:
  // Throws std::system_error when no folder can be created.
  explicit TempDir(const std::string& prefix = "twinlanes",
                   const std::filesystem::path& parent = {});
  ~TempDir();
  TempDir(TempDir&& other) noexcept;
  TempDir& operator=(TempDir&& other) noexcept;
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // Leaves the folder in place when this object goes.
  void keep() { keep_ = true; }

 private:
  void removeNow();

  std::filesystem::path path_;
  bool keep_ = false;
};

}  // namespace kit
