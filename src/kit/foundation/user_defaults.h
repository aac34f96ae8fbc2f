#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/log.h"
#include "kit/foundation/thread_checker.h"
#include "kit/foundation/value.h"

namespace kit {

// The user's preferences, as the platform's user defaults: typed values by
// key over registered defaults (kept in memory, never written). Persisted as
// JSON in `folder`/prefs.json, written atomically on synchronize() and on
// destruction. A missing file is a first launch; a corrupt one is moved aside
// to prefs.json.bad with a log line and the store starts from its defaults.
// A folder that cannot be used (or an empty path) keeps the values in memory
// only. Main thread only (the thread that made it; checked in debug builds).
// The log must outlive the store.
class UserDefaults {
 public:
  // Files larger than this are set aside unread.
  static constexpr size_t kMaxFileBytes = 4 << 20;

  UserDefaults(std::filesystem::path folder, Log& log);
  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  // The per-user data folder of the platform (created if missing).
  static std::filesystem::path defaultFolder();

  // The stored values a preferences file holds, or nullopt when the bytes
  // are not one (not JSON, not an object, too deep). encode() gives the
  // bytes of a file; decode(encode(v)) == v for every decoded v.
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
  // false (and logs) when the file could not be written; the values stay in
  // memory and the old file stays intact.
  bool synchronize();

  const std::filesystem::path& filePath() const { return file_; }
  // False when the values live in memory only.
  bool isPersistent() const { return persistent_; }
  // The values set by the program (or loaded), without the defaults.
  const Value::Dictionary& storedValues() const { return values_; }

 private:
  void load();
  void removeStrayTempFiles();
  // Moves a bad file to prefs.json.bad and logs why, in one line.
  void setAside(std::string_view why);
  bool write();

  std::filesystem::path folder_;
  std::filesystem::path file_;
  Log& log_;
  Value::Dictionary values_;
  Value::Dictionary defaults_;
  bool dirty_ = false;
  bool persistent_ = true;
  ThreadChecker thread_;
};

}  // namespace kit
