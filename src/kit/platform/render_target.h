#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/foundation/result.h"

namespace kit {

// A texture the render target made; 0 is none. Handles are only meaningful
// to the target that made them.
using TextureId = uint32_t;

// How a draw combines with the pixels already in the target. The portable
// renderer only needs these; the image blend modes of the UI layer are the
// image backend's business.
enum class TargetBlend { None, Blend };

// One textured quad: a source rectangle of a texture (pixels) mapped onto a
// destination rectangle (target pixels) turned by `rotationDegrees` about the
// destination's centre, optionally flipped. An unturned, unflipped quad lands
// on whole pixels (its edges rounded); a turned one is placed exactly.
struct TexturedQuad {
  TextureId texture = 0;
  std::optional<Rect> source;  // nothing: the whole texture
  Rect destination;
  double rotationDegrees = 0;  // clockwise, as the screen's y axis points down
  bool flipVertical = false;
  double alpha = 1;        // 0..1, multiplied into every pixel
  Color tint{1, 1, 1, 1};  // multiplied into the colour channels
  TargetBlend blend = TargetBlend::Blend;
};

// Where a frame is drawn: the backend's window, canvas or offscreen buffer.
// The portable renderer walks the view tree and the scenes, rasterises what it
// needs through the text and image backends, and hands the target only
// pixels (textures) and quads. Coordinates are target pixels, origin top left.
// Owned by the backend; the renderer borrows it. Main thread only.
class RenderTarget {
 public:
  virtual ~RenderTarget() = default;

  // The drawable size in pixels (the window's backing store).
  virtual Size pixelSize() const = 0;

  // A texture of straight (not premultiplied) RGBA pixels, rows top to
  // bottom, 4 * width bytes each; filtered linearly when scaled. 0 when the
  // target cannot make it (out of memory, a side beyond its limit).
  virtual TextureId createTexture(const uint8_t* rgba, int width, int height) = 0;
  // Gives the texture back; 0 and unknown ids are ignored.
  virtual void destroyTexture(TextureId texture) = 0;

  // Sets every pixel (inside the clip, if any) to the colour.
  virtual void clear(const Color& color) = 0;
  // Fills `rect` (pixels, edges rounded to whole pixels) with the colour,
  // blended by its alpha or copied.
  virtual void fillRect(const Rect& rect, const Color& color, TargetBlend blend) = 0;
  virtual void drawQuad(const TexturedQuad& quad) = 0;
  // Later draws stay inside `rect` (whole pixels); nothing lifts the clip.
  virtual void setClip(const std::optional<Rect>& rect) = 0;

  // Shows what was drawn since the last present.
  virtual void present() = 0;
  // The drawn pixels (before present), straight RGBA, rows top to bottom;
  // for screenshots and tests. May fail where pixels cannot be read back.
  [[nodiscard]] virtual Result<std::vector<uint8_t>> readPixels(int& width, int& height) const = 0;
};

}  // namespace kit
