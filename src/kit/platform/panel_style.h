#pragma once

#include <cstdint>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"

namespace kit {

// What a view's layer draws under its content: its background colour in a
// rounded rectangle, and a soft drop shadow of that shape. Everything in
// points; equal styles rasterise to equal bitmaps, so they key a cache.
struct PanelStyle {
  Size size;
  double cornerRadius = 0;
  Color fill = Color::clear();
  Color shadowColor = Color::black();
  double shadowOpacity = 0;  // no shadow at 0
  double shadowRadius = 3;   // blur radius
  Size shadowOffset{0, -3};  // y down, as the view tree

  bool hasShadow() const { return shadowOpacity > 0 && shadowColor.alpha > 0; }
  friend bool operator==(const PanelStyle&, const PanelStyle&) = default;
};

// Straight (not premultiplied) RGBA pixels, rows top to bottom. `origin` is
// where the panel's own top-left corner lies in the bitmap (the shadow may
// reach beyond the panel on any side), in pixels.
struct PanelBitmap {
  int width = 0;
  int height = 0;
  Point origin;
  std::vector<uint8_t> rgba;
};

}  // namespace kit
