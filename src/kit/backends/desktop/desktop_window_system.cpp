#include "kit/backends/desktop/desktop_window_system.h"

#include "kit/backends/desktop/render_window.h"

namespace kit {

Result<std::unique_ptr<PlatformWindow>> DesktopWindowSystem::open(const WindowOptions& options) {
  std::string why;
  std::unique_ptr<RenderWindow> window = RenderWindow::open(options, &why);
  if (!window)
    return Error{why};
  return std::unique_ptr<PlatformWindow>(std::move(window));
}

}  // namespace kit
