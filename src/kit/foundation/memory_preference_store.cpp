#include "kit/foundation/memory_preference_store.h"

namespace kit {

PreferenceStore::Loaded MemoryPreferenceStore::load(size_t maxBytes) {
  Loaded loaded;
  if (!document)
    return loaded;
  if (document->size() > maxBytes) {
    loaded.state = Loaded::State::kTooLarge;
    return loaded;
  }
  loaded.state = Loaded::State::kFound;
  loaded.bytes = *document;
  return loaded;
}

Status MemoryPreferenceStore::save(std::string_view bytes) {
  document = std::string(bytes);
  ++saves;
  return {};
}

Result<std::string> MemoryPreferenceStore::setAside() {
  if (!document)
    return Error{"nothing to set aside"};
  setAsideDocuments.push_back(std::move(*document));
  document.reset();
  return "bad-" + std::to_string(setAsideDocuments.size());
}

}  // namespace kit
