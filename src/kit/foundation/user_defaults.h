#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "kit/foundation/log.h"
#include "kit/foundation/value.h"

namespace kit {

// The user's preferences, as the platform's user defaults: typed values by
// key over registered defaults (kept in memory, never written). Persisted as
// JSON in `folder`/prefs.json, written atomically on synchronize() and on
// destruction. A missing file is a first launch; a corrupt one is moved aside
// to prefs.json.bad with a log line and the store starts from its defaults.
// Main thread only. The log must outlive the store.
class UserDefaults {
 public:
  UserDefaults(std::filesystem::path folder, Log& log);
  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  // The per-user data folder of the platform (created if missing).
  static std::filesystem::path defaultFolder();

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

 private:
  void load();

  std::filesystem::path folder_;
  std::filesystem::path file_;
  Log& log_;
  Value::Dictionary values_;
  Value::Dictionary defaults_;
  bool dirty_ = false;
};

}  // namespace kit
