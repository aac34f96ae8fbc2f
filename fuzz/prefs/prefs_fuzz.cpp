// Arbitrary bytes as a preferences file and as JSON text: nothing may crash,
// leak or hang, every typed getter must cope with whatever was stored, and
// whatever loads must save and load back unchanged.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "kit/backends/files/file_preference_store.h"
#include "kit/foundation/json.h"
#include "kit/foundation/log.h"
#include "kit/foundation/temp_dir.h"
#include "kit/foundation/user_defaults.h"

namespace {

void check(bool condition) {
  if (!condition)
    std::abort();
}

// Every conversion the preferences offer, on every value of a tree.
void readEveryWay(const kit::Value& value) {
  (void)value.integerValue();
  (void)value.doubleValue();
  (void)value.boolValue();
  (void)value.stringValue();
  if (const auto* array = value.ifArray()) {
    for (const auto& item : *array)
      readEveryWay(item);
  }
  if (const auto* dictionary = value.ifDictionary()) {
    for (const auto& [key, item] : *dictionary) {
      check(&value[key] == &item);
      readEveryWay(item);
    }
  }
}

void readEveryWay(const kit::UserDefaults& prefs, const std::string& key) {
  readEveryWay(prefs.objectForKey(key));
  (void)prefs.integerForKey(key);
  (void)prefs.boolForKey(key);
  (void)prefs.floatForKey(key);
  (void)prefs.doubleForKey(key);
  (void)prefs.stringForKey(key);
  (void)prefs.arrayForKey(key);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);

  if (auto value = kit::parseJson(bytes)) {
    readEveryWay(*value);
    check(kit::parseJson(kit::toJson(*value)) == value);
  }

  const auto decoded = kit::UserDefaults::decode(bytes);
  if (decoded)
    check(kit::UserDefaults::decode(kit::UserDefaults::encode(*decoded)) == decoded);

  // The loader itself, on a real file.
  static kit::TempDir folder("prefs-fuzz");
  std::ofstream(folder.path() / "prefs.json", std::ios::binary | std::ios::trunc)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  kit::CapturingLog log;
  kit::FilePreferenceStore store(folder.path(), log);
  kit::UserDefaults prefs(store, log);
  prefs.registerDefaults({{"best", 0}, {"sound", true}});
  check(prefs.storedValues() == decoded.value_or(kit::Value::Dictionary{}));
  check(log.lines().size() == (decoded ? 0u : 1u));
  for (const auto& [key, item] : prefs.storedValues())
    readEveryWay(prefs, key);
  for (const char* key : {"best", "sound", "AppleLanguages", "missing"})
    readEveryWay(prefs, key);
  return 0;
}
