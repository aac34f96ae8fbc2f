#pragma once

#include <string>
#include <string_view>

namespace kit {

// A font as the views ask for it: a fontconfig family, a size and a style.
// Sizes are points, and one point is one pixel at scale 1 (not 1/72 inch), so
// text measures the same as on the platform. Glyphs missing from the family
// (Chinese, for one) fall back to an installed font that has them.
struct Font {
  static constexpr const char* kSystemFamily = "Liberation Sans";

  std::string family = kSystemFamily;
  double pointSize = 17;
  bool bold = false;
  bool italic = false;

  static Font systemFontOfSize(double size) { return {kSystemFamily, size, false, false}; }
  static Font boldSystemFontOfSize(double size) { return {kSystemFamily, size, true, false}; }

  // From a PostScript-style name: "Arial-BoldMT" is family "Arial", bold;
  // "TimesNewRomanPS-ItalicMT" is "Times New Roman", italic; "HelveticaNeue"
  // is "Helvetica Neue". Fontconfig resolves the family (Arial to Liberation
  // Sans); an unknown one gets its default sans font. An empty name gives the
  // system font.
  static Font fontWithName(std::string_view name, double size);

  friend bool operator==(const Font&, const Font&) = default;
};

}  // namespace kit
