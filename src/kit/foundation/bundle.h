#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/log.h"
#include "kit/foundation/value.h"
#include "kit/platform/resource_store.h"

namespace kit {

class UserDefaults;

// The application's resources, read through the backend's ResourceStore:
// images by name, localized strings tables (strings/<table>.<lang>.json) and
// info values from the publisher config (publisher.json). Reads the
// preferred languages from the preferences' "AppleLanguages". Tables are
// read once and cached; a missing or broken one is logged once. Main thread
// only; borrowed services (the preferences may be null) must outlive it.
class Bundle {
 public:
  Bundle(const ResourceStore& resources, const UserDefaults* defaults, Log& log);

  // Every resource, by name ("layout/main.json", "ads/manifest.json").
  const ResourceStore& resources() const { return resources_; }

  // "bg.png", "car" or "fire1": the resource name of the SVG or PNG under
  // images/ whose stem matches ("images/car.svg"; an SVG wins); nullopt
  // when there is none.
  std::optional<std::string> imageResource(std::string_view name) const;

  // The text of `key` in `table` for the first preferred language that has
  // the table (trying "zh-Hans-CN", then "zh-Hans", then "zh"), else in the
  // English table, else `value`, or the key itself when `value` is empty, as
  // the platform does.
  std::string localizedString(const std::string& key, const std::string& value,
                              const std::string& table) const;

  // "CFBundleVersion", "CFBundleShortVersionString", "CFBundleDisplayName"
  // and the publisher's values ("appStoreId", "supportMail", ...); nil if absent.
  Value infoValue(const std::string& key) const;

  // Preferred language codes, most wanted first ("en" when none are known).
  std::vector<std::string> preferredLanguages() const;

  // Language codes and table names become parts of file names, and the
  // languages come from a user-editable file: letters, digits, '-' and '_' only.
  static bool isSafeName(std::string_view name);

 private:
  // The table of one language, loaded on first use; null if it has none.
  const Value::Dictionary* table(const std::string& name, const std::string& lang) const;
  // Preferred codes, each followed by its shorter forms, then "en".
  std::vector<std::string> lookupLanguages() const;

  const ResourceStore& resources_;
  const UserDefaults* defaults_;
  Log& log_;
  Value info_;
  mutable std::map<std::string, std::optional<Value::Dictionary>> tables_;
  mutable std::set<std::string> reportedMissing_;
};

}  // namespace kit
