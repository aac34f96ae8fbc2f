#include "kit/backends/web/local_storage_preferences.h"

#include <emscripten/emscripten.h>

#include "kit/backends/web/js_bytes.h"

// Both return an empty string on success and the reason otherwise; load
// leaves the document in the stash.
// clang-format off
EM_JS(char*, tl_prefs_load, (const char* item), {
  try {
    const text = window.localStorage.getItem(UTF8ToString(item));
    Module.twinlanesStash = new TextEncoder().encode(text === null ? "" : text);
    return 0;
  } catch (e) {
    Module.twinlanesStash = null;
    return allocateUTF8('localStorage cannot be read: ' + e.message);
  }
});

EM_JS(char*, tl_prefs_save, (const char* item, const char* text, int length), {
  try {
    window.localStorage.setItem(UTF8ToString(item), UTF8ToString(text, length));
    return 0;
  } catch (e) {
    return allocateUTF8('localStorage cannot be written: ' + e.message);
  }
});
EM_JS(char*, tl_prefs_set_aside, (const char* item, const char* bad), {
  try {
    const storage = window.localStorage;
    const text = storage.getItem(UTF8ToString(item));
    storage.setItem(UTF8ToString(bad), text === null ? "" : text);
    storage.removeItem(UTF8ToString(item));
    return 0;
  } catch (e) {
    return allocateUTF8('localStorage cannot be written: ' + e.message);
  }
});
// clang-format on

namespace kit::web {
namespace {

// The reason a JavaScript call gave, freed here; empty when it gave none.
std::string takeReason(char* reason) {
  if (reason == nullptr)
    return {};
  std::string text(reason);
  free(reason);
  return text;
}

std::string itemText(const char* item) {
  return std::string("localStorage[\"") + item + "\"]";
}

}  // namespace

PreferenceStore::Loaded LocalStoragePreferences::load(size_t maxBytes) {
  Loaded loaded;
  const std::string reason = takeReason(tl_prefs_load(kItem));
  if (!reason.empty()) {
    loaded.state = Loaded::State::kUnreadable;
    loaded.why = reason;
    return loaded;
  }
  loaded.bytes = takeStash();
  if (loaded.bytes.empty())
    return loaded;  // no item: a first launch
  if (loaded.bytes.size() > maxBytes) {
    loaded.bytes.clear();
    loaded.state = Loaded::State::kTooLarge;
    return loaded;
  }
  loaded.state = Loaded::State::kFound;
  return loaded;
}

Result<std::string> LocalStoragePreferences::setAside() {
  const std::string reason = takeReason(tl_prefs_set_aside(kItem, kSetAsideItem));
  if (!reason.empty())
    return Error{reason};
  return itemText(kSetAsideItem);
}

Status LocalStoragePreferences::save(std::string_view document) {
  const std::string reason =
      takeReason(tl_prefs_save(kItem, document.data(), static_cast<int>(document.size())));
  if (!reason.empty())
    return Error{reason};
  return {};
}

std::string LocalStoragePreferences::location() const {
  return itemText(kItem);
}

}  // namespace kit::web
