#include <SDL.h>

#include <algorithm>

#include "kit/foundation/bundle.h"
#include "kit/foundation/preferred_languages.h"
#include "kit/platform/backend.h"

namespace kit {

std::vector<std::string> systemLanguages() {
  std::vector<std::string> codes;
  SDL_ClearError();
  SDL_Locale* locales = SDL_GetPreferredLocales();
  if (!locales)
    return codes;
  for (const SDL_Locale* l = locales; l->language; ++l) {
    std::string code = l->language;
    std::string country = l->country ? l->country : "";
    // Chinese texts are told apart by script, and the script follows from
    // the region.
    if (code == "zh") {
      bool traditional = country == "TW" || country == "HK" || country == "MO";
      code += traditional ? "-Hant" : "-Hans";
    }
    if (!country.empty())
      code += "-" + country;
    if (std::optional<std::string> standard = languageCodeOf(code))
      code = *standard;
    if (Bundle::isSafeName(code) && std::find(codes.begin(), codes.end(), code) == codes.end()) {
      codes.push_back(code);
    }
  }
  SDL_free(locales);
  return codes;
}

}  // namespace kit
