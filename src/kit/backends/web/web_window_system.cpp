#include "kit/backends/web/web_window_system.h"

#include <emscripten/emscripten.h>

#include <fstream>

#include "kit/backends/web/browser_canvas.h"

// clang-format off
EM_JS(bool, tl_page_visible, (), { return document.visibilityState !== 'hidden'; });
// clang-format on

namespace kit::web {

WebWindow::WebWindow(Size content) : layout_(content), events_(layout_) {
  layout_.apply();
}

Viewport WebWindow::viewport() const {
  Viewport v;
  v.content = layout_.content();
  v.scale = layout_.cssScale();
  const double cssWidth = v.content.width * v.scale;
  v.density = cssWidth > 0 ? target_.pixelSize().width / cssWidth : 1;
  return v;
}

bool WebWindow::isVisible() const {
  return tl_page_visible();
}

Status WebWindow::saveScreenshot(const std::filesystem::path& file) const {
  int width = 0, height = 0;
  Result<std::vector<uint8_t>> pixels = target_.readPixels(width, height);
  if (!pixels || width == 0)
    return Error{"the canvas cannot be read back"};
  OffscreenCanvas canvas(width, height);
  canvas.put(*pixels);
  const std::string png = canvas.encode("image/png", 1);
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (png.empty() || !(out << png))
    return Error{"cannot write " + file.string()};
  return {};
}

Result<std::unique_ptr<PlatformWindow>> WebWindowSystem::open(const WindowOptions& options) {
  if (!hasCanvas())
    return Error{"no page to draw on"};
  if (window_ != nullptr)
    return Error{"the page has one canvas, and it is open"};
  auto window = std::make_unique<WebWindow>(options.content);
  window_ = window.get();
  return std::unique_ptr<PlatformWindow>(std::move(window));
}

}  // namespace kit::web
