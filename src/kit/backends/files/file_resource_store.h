#pragma once

#include <filesystem>

#include "kit/platform/resource_store.h"

namespace kit {

// The resources as files below a folder (the installed or source tree's
// resources/, or the folder the page preloads). Holds nothing but the
// folder's path, so any thread may read through it.
class FileResourceStore final : public ResourceStore {
 public:
  explicit FileResourceStore(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& folder() const { return folder_; }

  Result<std::string> read(std::string_view name, size_t maxBytes) const override;
  bool exists(std::string_view name) const override;
  std::string location(std::string_view name) const override;

 private:
  std::filesystem::path folder_;
};

}  // namespace kit
