#include "kit/backends/files/file_preference_store.h"
#include "kit/backends/files/file_resource_store.h"
#include "kit/foundation/headless_platform.h"
#include "kit/platform/backend.h"

namespace kit {

std::unique_ptr<PreferenceStore> makeHeadlessPreferenceStore(const std::filesystem::path& folder,
                                                             Log& log) {
  return std::make_unique<FilePreferenceStore>(folder, log);
}

std::unique_ptr<ResourceStore> makeHeadlessResourceStore(const std::filesystem::path& folder) {
  return std::make_unique<FileResourceStore>(folder);
}

}  // namespace kit
