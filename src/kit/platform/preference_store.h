#pragma once

#include <string>
#include <string_view>

#include "kit/foundation/result.h"

namespace kit {

// Where the preferences document lives: a file on the desktop, localStorage
// in the browser, memory in tests. The document is opaque bytes to the store
// (UserDefaults encodes and decodes it). Owned by the backend, borrowed by
// UserDefaults. Main thread only.
class PreferenceStore {
 public:
  virtual ~PreferenceStore() = default;
  // The saved document; an empty string when nothing was saved yet. An error
  // only when something is there but cannot be read.
  [[nodiscard]] virtual Result<std::string> load() = 0;
  // Replaces the document atomically: a reader sees the old or the new one,
  // never a mix, also after a crash mid-save.
  [[nodiscard]] virtual Status save(std::string_view document) = 0;
  // Where the document lives, for messages ("~/.local/share/...", "localStorage").
  virtual std::string location() const = 0;
};

// Keeps the document in memory: for tests and headless runs.
class MemoryPreferenceStore final : public PreferenceStore {
 public:
  Result<std::string> load() override { return document; }
  Status save(std::string_view text) override {
    document = std::string(text);
    ++saves;
    return {};
  }
  std::string location() const override { return "memory"; }

  std::string document;
  int saves = 0;
};

}  // namespace kit
