#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "kit/backends/files/folder_lock.h"
#include "kit/foundation/log.h"
#include "kit/platform/preference_store.h"

namespace kit {

// The preferences document as `folder`/prefs.json. Saves go to a temporary
// file in the folder that reaches the disk and is renamed over the old one;
// a bad file is moved aside to prefs.json.bad-<UTC time> (the newest
// kKeptBadFiles kept). The store holds the folder while it lives: a second
// store on it (another copy of the program) only reads, never writes or
// cleans, and says so; a folder that cannot be used (or an empty path) keeps
// nothing. Lines about the folder go to the log, which outlives the store.
// Main thread only.
class FilePreferenceStore final : public PreferenceStore {
 public:
  // Set-aside copies of bad files kept in the folder, newest first.
  static constexpr size_t kKeptBadFiles = 5;

  // Takes the folder (creating it) and removes temporary files a killed
  // save left there.
  FilePreferenceStore(std::filesystem::path folder, Log& log);

  // The per-user data folder of the platform (created if missing).
  static std::filesystem::path defaultFolder();

  const std::filesystem::path& folder() const { return folder_; }

  Loaded load(size_t maxBytes) override;
  Status save(std::string_view document) override;
  Result<std::string> setAside() override;
  std::string location() const override { return file_.string(); }
  bool isPersistent() const override { return persistent_; }
  bool inUseElsewhere() const override { return inUseElsewhere_; }

 private:
  void take(Log& log);
  void removeStrayTempFiles();

  std::filesystem::path folder_;
  std::filesystem::path file_;
  std::optional<FolderLock> lock_;
  bool usable_ = false;      // the folder exists and can be read
  bool persistent_ = false;  // ... and is this store's to write and clean
  bool inUseElsewhere_ = false;
};

}  // namespace kit
