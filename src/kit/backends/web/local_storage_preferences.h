#pragma once

#include <string>
#include <string_view>

#include "kit/platform/preference_store.h"

namespace kit::web {

// The preferences document in the page's localStorage, one item written whole
// (setItem replaces it in one step, so a reader never sees half a document).
// Private browsing or a full quota makes save() fail with the reason. A bad
// document is set aside to one item beside it (kSetAsideItem, the latest
// only). Main thread only.
class LocalStoragePreferences final : public PreferenceStore {
 public:
  static constexpr const char* kItem = "twinlanes.preferences";
  static constexpr const char* kSetAsideItem = "twinlanes.preferences.bad";

  Loaded load(size_t maxBytes) override;
  Status save(std::string_view document) override;
  Result<std::string> setAside() override;
  std::string location() const override;
  bool isPersistent() const override { return true; }
  bool inUseElsewhere() const override { return false; }
};

}  // namespace kit::web
