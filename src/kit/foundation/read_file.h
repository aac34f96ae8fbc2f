#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kit {

// The bytes of a small regular file, or nullopt when it is missing, not a
// regular file, unreadable or larger than maxBytes (a larger file is not
// read whole).
std::optional<std::string> readSmallFile(const std::filesystem::path& path, size_t maxBytes);

}  // namespace kit
