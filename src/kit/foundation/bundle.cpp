#include "kit/foundation/bundle.h"

#include <algorithm>
#include <cctype>

#include "kit/foundation/json.h"
#include "kit/foundation/preferred_languages.h"
#include "kit/foundation/strings.h"
#include "kit/foundation/user_defaults.h"

namespace kit {

namespace {

constexpr size_t kMaxConfigBytes = 1 << 20;

// Codes are matched in one spelling whatever case the user wrote them in
// ("ZH-HANS" finds the zh-Hans table).
std::string normalizedLanguage(std::string code) {
  if (std::optional<std::string> standard = languageCodeOf(code))
    return *standard;
  std::replace(code.begin(), code.end(), '_', '-');
  return code;
}

bool hasImageExtension(std::string_view name, std::string_view ext) {
  return name.size() > ext.size() && endsWithIgnoringCase(name, ext);
}

}  // namespace

Bundle::Bundle(const ResourceStore& resources, const UserDefaults* defaults, Log& log)
    : resources_(resources), defaults_(defaults), log_(log) {
  const char* config = "publisher.json";
  Result<std::string> bytes = resources_.read(config, kMaxConfigBytes);
  std::optional<Value> parsed = bytes ? parseJson(*bytes) : std::nullopt;
  if (parsed && parsed->ifDictionary()) {
    info_ = std::move(*parsed);
  } else {
    log_.write("Publisher config " + resources_.location(config) +
               (bytes ? " is not a JSON object" : " is missing or unreadable") +
               "; bundle info values are empty");
  }
}

std::optional<std::string> Bundle::imageResource(std::string_view name) const {
  std::string_view stem = name;
  for (std::string_view ext : {".png", ".svg"}) {
    if (hasImageExtension(stem, ext))
      stem.remove_suffix(ext.size());
  }
  if (stem.empty() || stem == "." || stem == ".." ||
      stem.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
    return std::nullopt;
  }
  for (const char* ext : {".svg", ".png"}) {
    std::string candidate = "images/" + std::string(stem) + ext;
    if (resources_.exists(candidate))
      return candidate;
  }
  return std::nullopt;
}

const Value::Dictionary* Bundle::table(const std::string& name, const std::string& lang) const {
  const std::string file = name + "." + lang + ".json";
  auto it = tables_.find(file);
  if (it == tables_.end()) {
    std::optional<Value::Dictionary> loaded;
    const std::string path = "strings/" + file;
    if (resources_.exists(path)) {
      Result<std::string> bytes = resources_.read(path, kMaxConfigBytes);
      std::optional<Value> parsed = bytes ? parseJson(*bytes) : std::nullopt;
      if (parsed && parsed->ifDictionary()) {
        loaded = *parsed->ifDictionary();
      } else {
        log_.write("Strings table " + resources_.location(path) +
                   " is not a JSON object; ignoring it");
      }
    }
    it = tables_.emplace(file, std::move(loaded)).first;
  }
  return it->second ? &*it->second : nullptr;
}

std::vector<std::string> Bundle::lookupLanguages() const {
  std::vector<std::string> codes;
  auto add = [&](const std::string& code) {
    if (std::find(codes.begin(), codes.end(), code) == codes.end())
      codes.push_back(code);
  };
  for (const std::string& preferred : preferredLanguages()) {
    std::string code = preferred;
    for (;;) {
      add(code);
      size_t dash = code.rfind('-');
      if (dash == std::string::npos || dash == 0)
        break;
      code.resize(dash);
    }
  }
  add("en");
  return codes;
}

std::string Bundle::localizedString(const std::string& key, const std::string& value,
                                    const std::string& tableName) const {
  if (Bundle::isSafeName(tableName)) {
    const Value::Dictionary* chosen = nullptr;
    for (const std::string& lang : lookupLanguages()) {
      if ((chosen = table(tableName, lang)))
        break;
    }
    for (const Value::Dictionary* t : {chosen, table(tableName, "en")}) {
      if (!t)
        continue;
      auto it = t->find(key);
      if (it == t->end())
        continue;
      if (std::optional<std::string> text = it->second.stringValue())
        return *text;
    }
    if (!chosen && reportedMissing_.insert(tableName).second) {
      log_.write("No strings table " + tableName + " in " + resources_.location("strings"));
    }
  }
  return value.empty() ? key : value;
}

Value Bundle::infoValue(const std::string& key) const {
  return info_[key];
}

std::vector<std::string> Bundle::preferredLanguages() const {
  std::vector<std::string> languages;
  if (defaults_) {
    if (auto array = defaults_->arrayForKey("AppleLanguages")) {
      for (const Value& item : *array) {
        const std::string* code = item.ifString();
        if (code && isSafeName(*code))
          languages.push_back(normalizedLanguage(*code));
      }
    }
  }
  if (languages.empty())
    languages.push_back("en");
  return languages;
}

bool Bundle::isSafeName(std::string_view name) {
  if (name.empty() || name.size() > 64)
    return false;
  return std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
  });
}

}  // namespace kit
