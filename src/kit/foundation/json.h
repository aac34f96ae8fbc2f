#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/result.h"
#include "kit/foundation/value.h"

namespace kit {

// Nesting deeper than this is refused whatever the caller asks for: deeper
// values could not be copied or destroyed without deep recursion.
inline constexpr int kMaxJsonDepth = 512;

// JSON text <-> Value. Parsing never throws: malformed text (invalid UTF-8
// included), or nesting deeper than maxDepth, gives nullopt; a hostile
// document is refused as soon as it goes too deep, never recursed into.
// Integers stay integers (beyond 64 bits they become reals), reals stay
// reals; a JSON null becomes nil. A repeated key keeps its last value. A
// number too large for a double (1e400) reads as nil rather than refusing
// the whole document.
std::optional<Value> parseJson(std::string_view text, int maxDepth = 64);

// The same, saying why a text is refused: "is nested deeper than N levels"
// for a document that is valid but too deep, else "is not valid JSON (...)".
Result<Value> readJson(std::string_view text, int maxDepth = 64);

// Compact JSON text of a value. Reals keep full precision (the shortest text
// that reads back as the same double) so dumps can be compared exactly; NaN
// and infinities become null. Invalid UTF-8 in a text is replaced with
// U+FFFD, and containers nested deeper than kMaxJsonDepth are written as null.
std::string toJson(const Value& value);

// The same with line breaks and `indent` spaces per level, for files people
// may read.
std::string toJson(const Value& value, int indent);

}  // namespace kit
