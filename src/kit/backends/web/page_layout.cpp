#include "kit/backends/web/page_layout.h"

#include <emscripten/emscripten.h>

// Returns the CSS pixels per content point it chose.
// clang-format off
EM_JS(double, tl_layout_canvas, (double contentWidth, double contentHeight), {
  const canvas = Module.canvas;
  const viewWidth = Math.max(1, window.innerWidth);
  const viewHeight = Math.max(1, window.innerHeight);
  const ratio = window.devicePixelRatio || 1;
  const scale = Math.min(viewWidth / contentWidth, viewHeight / contentHeight);
  const cssWidth = contentWidth * scale;
  const cssHeight = contentHeight * scale;
  canvas.style.width = cssWidth + 'px';
  canvas.style.height = cssHeight + 'px';
  canvas.style.left = (viewWidth - cssWidth) / 2 + 'px';
  canvas.style.top = (viewHeight - cssHeight) / 2 + 'px';
  const width = Math.max(1, Math.round(cssWidth * ratio));
  const height = Math.max(1, Math.round(cssHeight * ratio));
  if (canvas.width !== width || canvas.height !== height) {
    canvas.width = width;
    canvas.height = height;
  }
  return scale;
});
// clang-format on

namespace kit::web {

void PageLayout::apply() {
  if (content_.width <= 0 || content_.height <= 0)
    return;
  cssScale_ = tl_layout_canvas(content_.width, content_.height);
}

Point PageLayout::toContent(double cssX, double cssY) const {
  if (cssScale_ <= 0)
    return {cssX, cssY};
  return {cssX / cssScale_, cssY / cssScale_};
}

}  // namespace kit::web
