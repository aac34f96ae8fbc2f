#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/log.h"
#include "kit/foundation/thread_checker.h"
#include "kit/foundation/value.h"
#include "kit/platform/preference_store.h"

namespace kit {

// The user's preferences, as the platform's user defaults: typed values by
// key over registered defaults (kept in memory, never written). Persisted as
// one compact JSON document in the backend's PreferenceStore, saved whole on
// synchronize() and on destruction. A missing document is a first launch; a
// corrupt one is set aside by the store with a log line and the values start
// from their defaults. A store held by another copy of the program is read
// but never written (changes stay in memory, as with a store that cannot
// persist). Main thread only (the thread that made it; checked in debug
// builds). The store and the log must outlive it.
class UserDefaults {
 public:
  // Documents larger than this are set aside unread, and never written.
  static constexpr size_t kMaxFileBytes = 4 << 20;

  UserDefaults(PreferenceStore& store, Log& log);
  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  // The stored values a preferences file holds, or nullopt when the bytes
  // are not one (not JSON, not an object, too deep, too large). encode()
  // gives the bytes of a file; decode(encode(v)) == v for every decoded v.
  static std::optional<Value::Dictionary> decode(std::string_view bytes);
  static std::string encode(const Value::Dictionary& values);

  void registerDefaults(const Value::Dictionary& defaults);

  // Stored value, else registered default, else nil.
  Value objectForKey(const std::string& key) const;
  int64_t integerForKey(const std::string& key) const;
  bool boolForKey(const std::string& key) const;
  float floatForKey(const std::string& key) const;
  double doubleForKey(const std::string& key) const;
  std::optional<std::string> stringForKey(const std::string& key) const;
  std::optional<Value::Array> arrayForKey(const std::string& key) const;

  // Setting nil removes the key.
  void setObject(const Value& value, const std::string& forKey);
  void setInteger(int64_t value, const std::string& forKey);
  void setBool(bool value, const std::string& forKey);
  void setFloat(float value, const std::string& forKey);
  void setDouble(double value, const std::string& forKey);
  void removeObjectForKey(const std::string& key);

  // Writes the stored values if they changed since the last write. Returns
  // false (and logs) when the document could not be saved; the values stay
  // in memory and the saved document stays intact.
  bool synchronize();

  const PreferenceStore& store() const { return store_; }
  // False when the values live in memory only.
  bool isPersistent() const { return persistent_; }
  // True when another copy of the program holds the store.
  bool inUseElsewhere() const { return store_.inUseElsewhere(); }
  // The values set by the program (or loaded), without the defaults.
  const Value::Dictionary& storedValues() const { return values_; }

 private:
  void load();
  // Has the store set a bad document aside and logs why, in one line.
  void setAside(std::string_view why);
  bool write();

  PreferenceStore& store_;
  Log& log_;
  Value::Dictionary values_;
  Value::Dictionary defaults_;
  bool dirty_ = false;
  bool persistent_ = true;
  ThreadChecker thread_;
};

}  // namespace kit
