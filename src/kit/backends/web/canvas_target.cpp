#include "kit/backends/web/canvas_target.h"

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>

// The JavaScript half keeps its objects in Module.twinlanesCanvas: the
// page's 2D context, the textures by id, and whether a clip is in force.
// clang-format off
EM_JS(void, tl_target_open, (), {
  const canvas = Module.canvas;
  const ctx = canvas.getContext('2d', { alpha: false });
  ctx.imageSmoothingEnabled = true;
  ctx.imageSmoothingQuality = 'high';
  Module.twinlanesCanvas = { canvas, ctx, textures: new Map(), nextId: 1, clipped: false };
});

EM_JS(void, tl_target_close, (), { delete Module.twinlanesCanvas; });

EM_JS(int, tl_target_width, (), { return Module.twinlanesCanvas.canvas.width; });
EM_JS(int, tl_target_height, (), { return Module.twinlanesCanvas.canvas.height; });

EM_JS(uint32_t, tl_texture_create, (const uint8_t* rgba, int width, int height), {
  const t = Module.twinlanesCanvas;
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const pixels = new Uint8ClampedArray(width * height * 4);
  pixels.set(HEAPU8.subarray(rgba, rgba + pixels.length));
  canvas.getContext('2d').putImageData(new ImageData(pixels, width, height), 0, 0);
  const id = t.nextId++;
  t.textures.set(id, { canvas, tints: new Map() });
  return id;
});

EM_JS(void, tl_texture_destroy, (uint32_t id), { Module.twinlanesCanvas.textures.delete(id); });

// Whole pixels, as the desktop fills: a fractional edge would be
// anti-aliased, and a copy's cleared edge would show through it as a seam.
EM_JS(void, tl_target_fill, (double x, double y, double w, double h, double r, double g, double b,
                             double a, bool copy), {
  const ctx = Module.twinlanesCanvas.ctx;
  const css = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
              Math.round(b * 255) + ',' + a + ')';
  const x0 = Math.round(x), y0 = Math.round(y);
  const x1 = Math.round(x + w), y1 = Math.round(y + h);
  if (x1 <= x0 || y1 <= y0) return;
  if (copy) ctx.clearRect(x0, y0, x1 - x0, y1 - y0);
  ctx.fillStyle = css;
  ctx.fillRect(x0, y0, x1 - x0, y1 - y0);
});

EM_JS(void, tl_target_clear, (double r, double g, double b), {
  const t = Module.twinlanesCanvas;
  t.ctx.fillStyle = 'rgb(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                    Math.round(b * 255) + ')';
  t.ctx.fillRect(0, 0, t.canvas.width, t.canvas.height);
});

EM_JS(void, tl_target_quad, (uint32_t id, double sx, double sy, double sw, double sh,
                             double dx, double dy, double dw, double dh, double degrees,
                             double px, double py, bool flip, double alpha,
                             double r, double g, double b, bool replace), {
  const t = Module.twinlanesCanvas;
  const texture = t.textures.get(id);
  if (!texture) return;
  let image = texture.canvas;
  if (r < 1 || g < 1 || b < 1) {
    // A colour-modulated copy, made once per colour: multiply the colour
    // in, then keep only the texture's own coverage.
    const key = r + ',' + g + ',' + b;
    image = texture.tints.get(key);
    if (!image) {
      image = document.createElement('canvas');
      image.width = texture.canvas.width;
      image.height = texture.canvas.height;
      const c = image.getContext('2d');
      c.drawImage(texture.canvas, 0, 0);
      c.globalCompositeOperation = 'multiply';
      c.fillStyle = 'rgb(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                    Math.round(b * 255) + ')';
      c.fillRect(0, 0, image.width, image.height);
      c.globalCompositeOperation = 'destination-in';
      c.drawImage(texture.canvas, 0, 0);
      texture.tints.set(key, image);
    }
  }
  if (sw < 0) {
    sw = image.width;
    sh = image.height;
  }
  const ctx = t.ctx;
  ctx.save();
  ctx.translate(dx + px, dy + py);
  if (degrees) ctx.rotate(degrees * Math.PI / 180);
  ctx.translate(-px, -py);
  if (flip) {
    ctx.translate(0, dh);
    ctx.scale(1, -1);
  }
  if (replace) {
    ctx.beginPath();
    ctx.rect(0, 0, dw, dh);
    ctx.clip();
    ctx.clearRect(0, 0, dw, dh);
  }
  ctx.globalAlpha = alpha;
  ctx.drawImage(image, sx, sy, sw, sh, 0, 0, dw, dh);
  ctx.restore();
});

EM_JS(void, tl_target_clip, (bool on, double x, double y, double w, double h), {
  const t = Module.twinlanesCanvas;
  if (t.clipped) t.ctx.restore();
  t.clipped = on;
  if (!on) return;
  t.ctx.save();
  t.ctx.beginPath();
  t.ctx.rect(x, y, w, h);
  t.ctx.clip();
});

EM_JS(void, tl_target_end_frame, (), {
  const t = Module.twinlanesCanvas;
  if (t.clipped) t.ctx.restore();
  t.clipped = false;
});

EM_JS(void, tl_target_read, (uint8_t* out, int width, int height), {
  const data = Module.twinlanesCanvas.ctx.getImageData(0, 0, width, height).data;
  HEAPU8.set(data, out);
});
// clang-format on

namespace kit::web {

CanvasTarget::CanvasTarget() {
  tl_target_open();
}

CanvasTarget::~CanvasTarget() {
  tl_target_close();
}

Size CanvasTarget::pixelSize() const {
  return {static_cast<double>(tl_target_width()), static_cast<double>(tl_target_height())};
}

TextureId CanvasTarget::createTexture(const uint8_t* rgba, int width, int height) {
  if (rgba == nullptr || width <= 0 || height <= 0 || width > 16384 || height > 16384)
    return 0;
  const TextureId id = tl_texture_create(rgba, width, height);
  textures_.push_back(id);
  return id;
}

void CanvasTarget::destroyTexture(TextureId texture) {
  const auto it = std::find(textures_.begin(), textures_.end(), texture);
  if (it == textures_.end())
    return;
  textures_.erase(it);
  tl_texture_destroy(texture);
}

void CanvasTarget::clear(const Color& color) {
  tl_target_clear(color.red, color.green, color.blue);
}

void CanvasTarget::fillRect(const Rect& rect, const Color& color, TargetBlend blend) {
  tl_target_fill(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height, color.red,
                 color.green, color.blue, color.alpha, blend == TargetBlend::None);
}

void CanvasTarget::drawQuad(const TexturedQuad& quad) {
  if (quad.texture == 0 || quad.alpha <= 0)
    return;
  double sx = 0, sy = 0, sw = -1, sh = -1;
  if (quad.source) {
    sx = quad.source->origin.x;
    sy = quad.source->origin.y;
    sw = quad.source->size.width;
    sh = quad.source->size.height;
  }
  const Rect& d = quad.destination;
  double x = d.origin.x, y = d.origin.y, w = d.size.width, h = d.size.height;
  if (quad.rotationDegrees == 0 && !quad.flipVertical) {
    // An unturned quad lands on whole pixels, its edges rounded.
    const double right = std::round(x + w), bottom = std::round(y + h);
    x = std::round(x);
    y = std::round(y);
    w = right - x;
    h = bottom - y;
  }
  // Turned about the destination's centre.
  tl_target_quad(quad.texture, sx, sy, sw, sh, x, y, w, h, quad.rotationDegrees, w / 2, h / 2,
                 quad.flipVertical, std::clamp(quad.alpha, 0.0, 1.0), quad.tint.red,
                 quad.tint.green, quad.tint.blue, quad.blend == TargetBlend::None);
}

void CanvasTarget::setClip(const std::optional<Rect>& rect) {
  if (rect)
    tl_target_clip(true, rect->origin.x, rect->origin.y, rect->size.width, rect->size.height);
  else
    tl_target_clip(false, 0, 0, 0, 0);
}

void CanvasTarget::present() {
  tl_target_end_frame();
}

Result<std::vector<uint8_t>> CanvasTarget::readPixels(int& width, int& height) const {
  width = tl_target_width();
  height = tl_target_height();
  std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
  if (!pixels.empty())
    tl_target_read(pixels.data(), width, height);
  return pixels;
}

}  // namespace kit::web
