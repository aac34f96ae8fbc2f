#pragma once

#include <string>
#include <string_view>

#include "kit/foundation/result.h"

namespace kit {

// The application's read-only resources (images/, layout/, strings/ ...) by
// relative name ("images/car.svg"): files on the desktop, preloaded fetches
// in the browser. Names never leave the resources (no "..", no absolute
// paths). Owned by the backend. Thread-safe for reads.
class ResourceStore {
 public:
  virtual ~ResourceStore() = default;
  [[nodiscard]] virtual Result<std::string> read(std::string_view name) const = 0;
  virtual bool exists(std::string_view name) const = 0;
};

}  // namespace kit
