#pragma once

#include "kit/platform/platform_window.h"

namespace kit {

// The desktop's windows (RenderWindow on SDL's renderer). Owned by the
// program's main; outlives the application.
class DesktopWindowSystem final : public WindowSystem {
 public:
  Result<std::unique_ptr<PlatformWindow>> open(const WindowOptions& options) override;
};

}  // namespace kit
