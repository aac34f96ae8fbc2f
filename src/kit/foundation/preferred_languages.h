#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/user_defaults.h"

namespace kit {

// Registers the user's preferred languages as the "AppleLanguages" default
// (registered, never written): the language `chosen` on the command line
// when it is a usable code, else the desktop's languages, else "en". The
// host calls it at start-up, before anything reads a strings table.
void registerPreferredLanguages(UserDefaults& defaults,
                                const std::optional<std::string>& chosen = std::nullopt);

// The language code of a locale or code as people write them: "zh_CN.UTF-8"
// and "zh-CN" are "zh-Hans-CN", "zh_TW" is "zh-Hant-TW", "en_US" is
// "en-US", "zh-Hans" stays. Nullopt for anything that is not one ("C",
// "POSIX", "", "../x").
std::optional<std::string> languageCodeOf(std::string_view locale);

}  // namespace kit
