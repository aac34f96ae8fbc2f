#include "kit/foundation/font.h"

#include <cctype>

namespace kit {
namespace {

bool endsWith(std::string_view s, std::string_view suffix) {
  return s.size() > suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

void dropSuffix(std::string_view& s, std::string_view suffix) {
  if (endsWith(s, suffix))
    s.remove_suffix(suffix.size());
}

bool containsWord(std::string_view s, std::string_view word) {
  return s.find(word) != std::string_view::npos;
}

// "TimesNewRoman" -> "Times New Roman": a space before each capital that
// follows a small letter.
std::string spaced(std::string_view camel) {
  std::string out;
  for (size_t i = 0; i < camel.size(); ++i) {
    const auto c = static_cast<unsigned char>(camel[i]);
    if (i > 0 && std::isupper(c) && std::islower(static_cast<unsigned char>(camel[i - 1]))) {
      out += ' ';
    }
    out += camel[i];
  }
  return out;
}

}  // namespace

Font Font::fontWithName(std::string_view name, double size) {
  if (name.empty())
    return systemFontOfSize(size);
  std::string_view family = name, style;
  if (const size_t dash = name.find('-'); dash != std::string_view::npos) {
    family = name.substr(0, dash);
    style = name.substr(dash + 1);
  }
  // Vendor tails of PostScript names: ArialMT, TimesNewRomanPSMT.
  dropSuffix(family, "MT");
  dropSuffix(family, "PS");
  Font font;
  font.family = family.empty() ? std::string(kSystemFamily) : spaced(family);
  font.pointSize = size;
  font.bold =
      containsWord(style, "Bold") || containsWord(style, "Black") || containsWord(style, "Heavy");
  font.italic = containsWord(style, "Italic") || containsWord(style, "Oblique");
  return font;
}

}  // namespace kit
