#pragma once

#include <filesystem>
#include <string_view>

#include "kit/foundation/result.h"

namespace kit {

// Replaces `path` with `bytes` in one step: they go to a uniquely named new
// file beside it (never following a link) and that file is renamed over
// `path` once it is complete, so a failed write leaves what was there. A
// `path` that exists but is not a regular file (a link, a FIFO, a device, a
// folder) is refused and left alone.
Status writeFileReplacing(const std::filesystem::path& path, std::string_view bytes);

}  // namespace kit
