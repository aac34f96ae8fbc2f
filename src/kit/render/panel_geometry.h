#pragma once

#include <optional>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/render/panel_bitmap.h"

namespace kit {

// Where rasterizePanel draws: the bitmap's size, the panel's rectangle in it
// and its shadow's placement, in pixels. Every backend rasterises panels from
// this, so they leave the same room for the shadow; the backend only paints.
struct PanelGeometry {
  int width = 0;            // the bitmap
  int height = 0;           //
  Rect panel;               // the panel itself, its origin on whole pixels
  double cornerRadius = 0;  // no more than half the panel's shorter side
  bool shadow = false;
  double shadowBlur = 0;   // whole pixels
  Size shadowOffset;       // pixels, y down
  double shadowAlpha = 0;  // the shadow colour's alpha times the style's opacity

  // A transparent bitmap of this size, the panel's origin set.
  PanelBitmap blank() const;
};

// Nothing for an empty, absurd or unusable scale or size, or a bitmap wider
// or taller than `largestSide` pixels (the backend's limit).
std::optional<PanelGeometry> panelGeometry(const PanelStyle& style, double scale,
                                           double largestSide);

// One spoke of a spinner, drawn from `inner` to `outer` pixels above the
// bitmap's centre after turning by `angle` radians (clockwise positive, as
// the y axis points down).
struct SpinnerSpoke {
  double angle = 0;
  double alpha = 0;
};

// What rasterizeSpinner draws: a square bitmap of `side` pixels, spokes of
// round-capped lines `lineWidth` wide.
struct SpinnerGeometry {
  int side = 0;
  double lineWidth = 0;
  double inner = 0;
  double outer = 0;
  std::vector<SpinnerSpoke> spokes;

  // A transparent bitmap of this size.
  PanelBitmap blank() const;
};

// Nothing for an unusable size, scale or spoke count, or a side beyond
// `largestSide` pixels. The spokes' alphas already include the colour's.
std::optional<SpinnerGeometry> spinnerGeometry(double side, double scale, double colorAlpha,
                                               int spokes, double largestSide);

}  // namespace kit
