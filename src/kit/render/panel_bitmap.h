#pragma once

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/platform/panel_style.h"

namespace kit {

// Rasterises `style` at `scale` pixels per point, antialiased, with the
// installed graphics (kit/foundation/graphics.h). An empty or absurd size
// gives an empty bitmap.
PanelBitmap rasterizePanel(const PanelStyle& style, double scale);

// A spinner of `spokes` rounded spokes in a square of `side` points, the
// brightest spoke pointing up and the others fading anticlockwise behind it,
// so that turning the bitmap clockwise shows the bright spoke leading.
PanelBitmap rasterizeSpinner(double side, double scale, Color color, int spokes);

}  // namespace kit
