#pragma once

#include <string_view>

// Small text helpers the kit and the game share. Case folding is ASCII only,
// so that results never depend on the process locale: URL schemes, file
// extensions and keywords are ASCII.
namespace kit {

bool equalsIgnoringCase(std::string_view a, std::string_view b);
bool startsWithIgnoringCase(std::string_view text, std::string_view prefix);
bool endsWithIgnoringCase(std::string_view text, std::string_view suffix);

// The value of one hexadecimal digit (either case), or -1 for any other byte.
int hexDigitValue(char c);

}  // namespace kit
