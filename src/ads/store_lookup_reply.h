#pragma once

#include <optional>
#include <string>
#include <string_view>

// The store's version lookup answers with JSON whose results[0].version names
// the version on sale. The reply comes from a server we do not control, so
// anything else reads as no version.
std::optional<std::string> storeVersionFromReply(std::string_view reply);
