#include "kit/foundation/memory_resource_store.h"

namespace kit {

void MemoryResourceStore::add(std::string name, std::string bytes) {
  resources_.insert_or_assign(std::move(name), std::move(bytes));
}

Result<std::string> MemoryResourceStore::read(std::string_view name, size_t maxBytes) const {
  auto it = isSafeName(name) ? resources_.find(name) : resources_.end();
  if (it == resources_.end())
    return Error{"no such resource"};
  if (it->second.size() > maxBytes)
    return Error{"larger than " + std::to_string(maxBytes) + " bytes"};
  return it->second;
}

bool MemoryResourceStore::exists(std::string_view name) const {
  return isSafeName(name) && resources_.find(name) != resources_.end();
}

std::string MemoryResourceStore::location(std::string_view name) const {
  return "memory:" + std::string(name);
}

}  // namespace kit
