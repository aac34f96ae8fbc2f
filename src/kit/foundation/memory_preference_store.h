#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kit/platform/preference_store.h"

namespace kit {

// The preferences document in memory, for tests and runs that keep nothing
// between launches: it lasts as long as this object, so UserDefaults made
// one after another on it see each other's saves. The fields are open for
// tests to set and look at. Main thread only.
class MemoryPreferenceStore final : public PreferenceStore {
 public:
  MemoryPreferenceStore() = default;
  explicit MemoryPreferenceStore(std::string saved) : document(std::move(saved)) {}

  Loaded load(size_t maxBytes) override;
  Status save(std::string_view bytes) override;
  Result<std::string> setAside() override;
  std::string location() const override { return "memory"; }
  bool isPersistent() const override { return true; }
  bool inUseElsewhere() const override { return false; }

  std::optional<std::string> document;  // nullopt: nothing saved yet
  std::vector<std::string> setAsideDocuments;
  int saves = 0;
};

}  // namespace kit
