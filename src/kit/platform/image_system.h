#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/foundation/result.h"
#include "kit/platform/bitmap.h"
#include "kit/platform/blend_mode.h"
#include "kit/platform/image_codec.h"
#include "kit/platform/panel_style.h"

namespace kit {

// One draw of a bitmap onto another: the source stretched to `target`, a
// rectangle in the destination's pixels, combined with what is there by
// `mode` at `alpha` (0 to 1). `sourceExtent` is the source's nominal size in
// pixels (points × scale), which may differ from its whole pixel counts by a
// fraction, so that its points land on the rectangle's points exactly.
struct Composite {
  Size sourceExtent;
  Rect target;
  BlendMode mode = BlendMode::Normal;
  double alpha = 1;
};

// The platform's pixel work for the kit's images: decoding and encoding
// image files, rasterising SVG (the ImageCodec part), filling and
// compositing premultiplied bitmaps with the kit's blend modes (the tint
// operations), and the layers' panels and spinners. Made by the backend and
// owned by whoever installed it (kit::Graphics); Image, ImageContext,
// rasterizeSvg and the panel functions reach it there.
//
// Thread-safe: every call may come from any thread at once (the house ad
// network draws ad pictures on its worker); an implementation keeps no state
// between calls, or guards it. A backend whose platform has no threads says so.
class ImageSystem : public ImageCodec {
 public:
  // Largest side, in pixels, of a bitmap the system can draw into.
  virtual int largestSide() const = 0;

  // PNG bytes (their header already checked) as premultiplied pixels, or a
  // one-line reason.
  [[nodiscard]] virtual Result<Bitmap> decodePng(std::string_view bytes) = 0;
  // The pixels as PNG bytes (straight alpha, as PNG keeps it).
  [[nodiscard]] virtual Result<std::string> encodePng(const Bitmap& pixels) = 0;
  // The pixels as JPEG bytes at `quality` (0 to 1); transparent parts come
  // out black. Nothing when the platform cannot encode.
  [[nodiscard]] virtual std::optional<std::string> encodeJpeg(const Bitmap& pixels,
                                                              double quality) = 0;

  // Replaces the pixels under `rect` (pixels, not clipped by the caller) with
  // `color`, copied rather than blended.
  virtual void fill(Bitmap& target, const Rect& rect, const Color& color) = 0;
  // Draws `source` onto `target` as `how` says; pixels outside how.target are
  // never touched, whatever the mode. Source and target are distinct.
  virtual void composite(Bitmap& target, const Bitmap& source, const Composite& how) = 0;

  // A view layer's background and shadow, and the activity spinner, as
  // straight RGBA (see kit/render/panel_geometry.h for the sizes shared by
  // every backend).
  virtual PanelBitmap rasterizePanel(const PanelStyle& style, double scale) = 0;
  virtual PanelBitmap rasterizeSpinner(double side, double scale, Color color, int spokes) = 0;

  // Called by a thread other than the main one that rasterised SVGs, as it
  // ends: a rasteriser may keep per-thread state it frees only on threads it
  // started.
  virtual void releaseThreadState() {}
};

}  // namespace kit
