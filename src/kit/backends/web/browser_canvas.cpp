#include "kit/backends/web/browser_canvas.h"

#include <emscripten/emscripten.h>

#include "kit/backends/web/js_bytes.h"

// clang-format off
EM_JS(bool, tl_has_canvas, (), {
  return typeof document !== 'undefined';
});

EM_JS(int, tl_canvas_make, (int width, int height), {
  const store = Module.twinlanesImages || (Module.twinlanesImages = { canvases: new Map(), nextId: 1 });
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const id = store.nextId++;
  store.canvases.set(id, canvas);
  return id;
});

EM_JS(void, tl_canvas_release, (int id), { Module.twinlanesImages.canvases.delete(id); });

EM_JS(void, tl_canvas_put, (int id, const uint8_t* rgba, int width, int height), {
  const canvas = Module.twinlanesImages.canvases.get(id);
  const pixels = new Uint8ClampedArray(width * height * 4);
  pixels.set(HEAPU8.subarray(rgba, rgba + pixels.length));
  canvas.getContext('2d').putImageData(new ImageData(pixels, width, height), 0, 0);
});

EM_JS(void, tl_canvas_get, (int id, uint8_t* out), {
  const canvas = Module.twinlanesImages.canvases.get(id);
  HEAPU8.set(canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data, out);
});

EM_JS(void, tl_canvas_draw, (int id, int source, double x, double y, double w, double h,
                             const char* operation, double alpha), {
  const canvases = Module.twinlanesImages.canvases;
  const ctx = canvases.get(id).getContext('2d');
  ctx.save();
  ctx.beginPath();
  ctx.rect(x, y, w, h);
  ctx.clip();
  const op = UTF8ToString(operation);
  if (op === 'clear') {
    ctx.clearRect(x, y, w, h);
  } else {
    ctx.globalCompositeOperation = op;
    ctx.globalAlpha = alpha;
    ctx.drawImage(canvases.get(source), x, y, w, h);
  }
  ctx.restore();
});

EM_JS(bool, tl_canvas_encode, (int id, const char* type, double quality), {
  const kind = UTF8ToString(type);
  const url = Module.twinlanesImages.canvases.get(id).toDataURL(kind, quality);
  const comma = url.indexOf(',');
  if (comma < 0 || !url.startsWith('data:' + kind)) return false;
  const binary = atob(url.substring(comma + 1));
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
  Module.twinlanesStash = bytes;
  return true;
});
// clang-format on

namespace kit::web {

const char* compositeOperationOf(BlendMode mode) {
  switch (mode) {
    case BlendMode::Normal:
      return "source-over";
    case BlendMode::Multiply:
      return "multiply";
    case BlendMode::Screen:
      return "screen";
    case BlendMode::Overlay:
      return "overlay";
    case BlendMode::Darken:
      return "darken";
    case BlendMode::Lighten:
      return "lighten";
    case BlendMode::ColorDodge:
      return "color-dodge";
    case BlendMode::ColorBurn:
      return "color-burn";
    case BlendMode::SoftLight:
      return "soft-light";
    case BlendMode::HardLight:
      return "hard-light";
    case BlendMode::Difference:
      return "difference";
    case BlendMode::Exclusion:
      return "exclusion";
    case BlendMode::Hue:
      return "hue";
    case BlendMode::Saturation:
      return "saturation";
    case BlendMode::Color:
      return "color";
    case BlendMode::Luminosity:
      return "luminosity";
    case BlendMode::Clear:
      return "clear";
    case BlendMode::Copy:
      return "copy";
    case BlendMode::SourceIn:
      return "source-in";
    case BlendMode::SourceOut:
      return "source-out";
    case BlendMode::SourceAtop:
      return "source-atop";
    case BlendMode::DestinationOver:
      return "destination-over";
    case BlendMode::DestinationIn:
      return "destination-in";
    case BlendMode::DestinationOut:
      return "destination-out";
    case BlendMode::DestinationAtop:
      return "destination-atop";
    case BlendMode::Xor:
      return "xor";
    // Canvas has no plus-darker; multiply is the closest darkening mode.
    case BlendMode::PlusDarker:
      return "multiply";
    case BlendMode::PlusLighter:
      return "lighter";
  }
  return "source-over";
}

bool hasCanvas() {
  static const bool has = tl_has_canvas();
  return has;
}

OffscreenCanvas::OffscreenCanvas(int width, int height)
    : id_(tl_canvas_make(width, height)), width_(width), height_(height) {}

OffscreenCanvas::~OffscreenCanvas() {
  tl_canvas_release(id_);
}

void OffscreenCanvas::put(const std::vector<uint8_t>& rgba) {
  if (rgba.size() == static_cast<size_t>(width_) * height_ * 4 && !rgba.empty())
    tl_canvas_put(id_, rgba.data(), width_, height_);
}

std::vector<uint8_t> OffscreenCanvas::get() const {
  std::vector<uint8_t> rgba(static_cast<size_t>(width_) * height_ * 4);
  if (!rgba.empty())
    tl_canvas_get(id_, rgba.data());
  return rgba;
}

void OffscreenCanvas::draw(const OffscreenCanvas& source, double x, double y, double w, double h,
                           const char* operation, double alpha) {
  tl_canvas_draw(id_, source.id_, x, y, w, h, operation, alpha);
}

std::string OffscreenCanvas::encode(const char* type, double quality) const {
  if (!tl_canvas_encode(id_, type, quality))
    return {};
  return takeStash();
}

}  // namespace kit::web
