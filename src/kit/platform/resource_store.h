#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "kit/foundation/result.h"

namespace kit {

// The application's read-only resources by name: "images/car.svg",
// "strings/Localizable.en.json", "publisher.json", "ads/manifest.json".
// Names are relative, '/'-separated, and never leave the resources
// (isSafeName); every read has a size limit so a huge file is refused unread.
// Supplied by the backend (a folder on the desktop, the page's preloaded
// files in the browser, a map in tests) and owned by the services. Its const
// calls may come from any thread (the ad network reads bundled ads on its
// worker); it outlives every reader.
class ResourceStore {
 public:
  virtual ~ResourceStore() = default;

  // The bytes of resource `name`, or why not (missing, not a file, larger
  // than `maxBytes`, unreadable, an unsafe name).
  virtual Result<std::string> read(std::string_view name, size_t maxBytes) const = 0;
  // True when `name` is a resource read() could open (a file, not a folder).
  virtual bool exists(std::string_view name) const = 0;
  // Where `name` lives in words, for log lines (a file's path).
  virtual std::string location(std::string_view name) const = 0;

  // A name that stays inside the resources: not empty, not absolute, no
  // ".." part, no NUL.
  static bool isSafeName(std::string_view name) {
    if (name.empty() || name.front() == '/' || name.find('\0') != std::string_view::npos)
      return false;
    for (size_t start = 0; start <= name.size();) {
      const size_t end = std::min(name.find('/', start), name.size());
      if (name.substr(start, end - start) == "..")
        return false;
      start = end + 1;
    }
    return true;
  }
};

}  // namespace kit
