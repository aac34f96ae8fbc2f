#pragma once

#include <string>
#include <string_view>

#include "kit/foundation/result.h"

namespace kit::web {

// The preferences document in the page's localStorage, one item written whole
// (setItem replaces it in one step, so a reader never sees half a document).
// Private browsing or a full quota makes save() fail with the reason.
// Main thread only.
class LocalStoragePreferences {
 public:
  static constexpr const char* kItem = "twinlanes.preferences";

  Result<std::string> load();
  Status save(std::string_view document);
  std::string location() const;
};

}  // namespace kit::web
