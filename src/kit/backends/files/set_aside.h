#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>

#include "kit/foundation/result.h"

namespace kit {

// Moves a file nobody can use out of the way without losing it: `file`
// becomes `file`.bad-YYYYMMDDTHHMMSSZ (UTC, with -02, -03 ... when that name
// is taken), never replacing an earlier copy; then only the newest `keep`
// copies of that file stay. Gives the name it was moved to.
Result<std::filesystem::path> setAsideFile(const std::filesystem::path& file,
                                           std::chrono::system_clock::time_point now, size_t keep);

}  // namespace kit
