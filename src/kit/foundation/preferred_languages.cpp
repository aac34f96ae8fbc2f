#include "kit/foundation/preferred_languages.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "kit/foundation/bundle.h"
#include "kit/platform/backend.h"

namespace kit {
namespace {

bool allOf(std::string_view text, int (*test)(int)) {
  return std::all_of(text.begin(), text.end(),
                     [test](char c) { return test(static_cast<unsigned char>(c)) != 0; });
}

std::string cased(std::string_view text, bool upper) {
  std::string out(text);
  for (char& c : out) {
    const auto u = static_cast<unsigned char>(c);
    c = static_cast<char>(upper ? std::toupper(u) : std::tolower(u));
  }
  return out;
}

}  // namespace

std::optional<std::string> languageCodeOf(std::string_view locale) {
  // "ll_CC.charset@modifier": the charset and the modifier say nothing of
  // the language.
  locale = locale.substr(0, locale.find_first_of(".@"));
  std::vector<std::string_view> parts;
  while (!locale.empty()) {
    const size_t cut = locale.find_first_of("_-");
    parts.push_back(locale.substr(0, cut));
    locale = cut == std::string_view::npos ? std::string_view() : locale.substr(cut + 1);
  }
  if (parts.empty() || parts.size() > 3 || parts[0].size() < 2 || parts[0].size() > 3 ||
      !allOf(parts[0], std::isalpha)) {
    return std::nullopt;
  }
  std::string language = cased(parts[0], false);
  std::string script;
  std::string region;
  for (size_t i = 1; i < parts.size(); ++i) {
    std::string_view part = parts[i];
    if (part.size() == 4 && allOf(part, std::isalpha) && script.empty() && region.empty()) {
      script = cased(part.substr(0, 1), true) + cased(part.substr(1), false);
    } else if ((part.size() == 2 && allOf(part, std::isalpha)) ||
               (part.size() == 3 && allOf(part, std::isdigit))) {
      if (!region.empty())
        return std::nullopt;
      region = cased(part, true);
    } else {
      return std::nullopt;
    }
  }
  // Chinese texts are told apart by script, which follows from the region.
  if (language == "zh" && script.empty()) {
    script = region == "TW" || region == "HK" || region == "MO" ? "Hant" : "Hans";
  }
  std::string code = language;
  if (!script.empty())
    code += "-" + script;
  if (!region.empty())
    code += "-" + region;
  return code;
}

void registerPreferredLanguages(UserDefaults& defaults, const std::optional<std::string>& chosen) {
  Value::Array languages;
  if (chosen) {
    if (std::optional<std::string> code = languageCodeOf(*chosen))
      languages.push_back(*code);
  }
  if (languages.empty()) {
    for (std::string& code : systemLanguages())
      languages.push_back(std::move(code));
  }
  if (languages.empty())
    languages.push_back("en");
  defaults.registerDefaults({{"AppleLanguages", Value(std::move(languages))}});
}

}  // namespace kit
