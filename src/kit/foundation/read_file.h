#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "kit/foundation/result.h"

namespace kit {

// The bytes of a small regular file, or nullopt when it is missing, not a
// regular file, unreadable or larger than maxBytes (a larger file is not
// read whole).
std::optional<std::string> readSmallFile(const std::filesystem::path& path, size_t maxBytes);
// The same, saying why not ("no such file", "a folder", "larger than N bytes").
Result<std::string> readSmallFileOrWhy(const std::filesystem::path& path, size_t maxBytes);

}  // namespace kit
