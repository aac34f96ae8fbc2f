#pragma once

#include "kit/platform/preference_store.h"

namespace kit::web {

// The preferences document in the page's localStorage, one item written whole
// (setItem replaces it in one step, so a reader never sees half a document).
// Private browsing or a full quota makes save() fail with the reason.
// Main thread only.
class LocalStoragePreferences final : public PreferenceStore {
 public:
  static constexpr const char* kItem = "twinlanes.preferences";

  Result<std::string> load() override;
  Status save(std::string_view document) override;
  std::string location() const override;
};

}  // namespace kit::web
