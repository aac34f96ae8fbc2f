#pragma once

#include <filesystem>

#include "kit/foundation/result.h"

namespace kit {

// Sole use of a folder by one owner at a time, across processes and within
// one: whoever holds it may write and clean the folder, anyone else is told
// it is taken. Released when the object goes or the process ends (even when
// killed); never inherited by programs the process starts.
class FolderLock {
 public:
  // The error when another owner has the folder.
  static constexpr const char* kInUse = "in use";

  // Takes the folder, or says why not: kInUse, or why the folder cannot be
  // locked at all.
  static Result<FolderLock> take(const std::filesystem::path& folder);

  FolderLock(FolderLock&& other) noexcept;
  FolderLock& operator=(FolderLock&& other) noexcept;
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock();

 private:
  explicit FolderLock(int fd) : fd_(fd) {}
  int fd_ = -1;
};

}  // namespace kit
