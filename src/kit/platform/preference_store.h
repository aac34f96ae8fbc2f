#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kit/foundation/result.h"

namespace kit {

// Where the preferences document lives between launches: one document,
// loaded once and saved whole, so a reader never sees half of it. The
// backend supplies it (a file on the desktop, localStorage in the page, a
// string in tests) and UserDefaults, which borrows it, decides what the
// bytes mean and writes every log line about the document, naming it by
// location(). The store outlives the UserDefaults on it. Main thread only.
class PreferenceStore {
 public:
  // What load() found.
  struct Loaded {
    enum class State {
      kFound,     // `bytes` holds the document
      kMissing,   // nothing saved yet: a first launch
      kTooLarge,  // larger than the limit; not read
      kRefused,  // something that cannot be the document; `why` says what ("is not a regular file")
      kUnreadable,  // there but cannot be read now; `why` is the system's reason
    };
    State state = State::kMissing;
    std::string bytes;
    std::string why;
  };

  virtual ~PreferenceStore() = default;

  // The saved document, refusing one larger than `maxBytes` without reading
  // it whole.
  virtual Loaded load(size_t maxBytes) = 0;
  // Replaces the document with `document` in one step; on failure the saved
  // one stays and the error says which step failed and why ("rename failed
  // (Is a directory)").
  virtual Status save(std::string_view document) = 0;
  // Moves a document nobody can use out of the way, keeping it for a person
  // to look at; gives the name it now has, for the log line.
  virtual Result<std::string> setAside() = 0;
  // The document's place in words, for log lines (a file's path).
  virtual std::string location() const = 0;
  // False when saves cannot last (no usable place, or the place is held by
  // another copy of the program): values then live in memory only.
  virtual bool isPersistent() const = 0;
  // True when another copy of the program holds the place: this one may
  // read it but never saves, sets aside or cleans anything there.
  virtual bool inUseElsewhere() const = 0;
};

}  // namespace kit
