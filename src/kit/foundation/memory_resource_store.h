#pragma once

#include <map>
#include <string>

#include "kit/platform/resource_store.h"

namespace kit {

// Resources held in memory, for tests and headless runs that need no files:
// add() them before any reader starts; after that the store is only read,
// from any thread.
class MemoryResourceStore final : public ResourceStore {
 public:
  void add(std::string name, std::string bytes);

  Result<std::string> read(std::string_view name, size_t maxBytes) const override;
  bool exists(std::string_view name) const override;
  std::string location(std::string_view name) const override;

 private:
  std::map<std::string, std::string, std::less<>> resources_;
};

}  // namespace kit
