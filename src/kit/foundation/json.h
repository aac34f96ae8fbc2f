#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/value.h"

namespace kit {

// JSON text <-> Value. Parsing never throws: malformed text, or nesting
// deeper than maxDepth, gives nullopt. Integers stay integers, reals stay
// reals; a JSON null becomes nil.
std::optional<Value> parseJson(std::string_view text, int maxDepth = 64);

// Compact JSON text of a value. Reals keep full precision (17 significant
// digits when needed) so dumps can be compared exactly.
std::string toJson(const Value& value);

}  // namespace kit
