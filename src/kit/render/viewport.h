#pragma once

#include "kit/foundation/geometry.h"
#include "kit/scene/affine_transform.h"

namespace kit {

// Where the application's window content (a fixed size in points) lands in a
// desktop window of any size: one uniform scale, centred, with bars on the
// sides that do not match (letterbox). Three spaces meet here: points (the
// view tree), window coordinates (what the platform reports for the mouse and
// the window size) and pixels (the drawable; more than window coordinates on a
// HiDPI desktop). Plain value.
struct Viewport {
  Size content{320, 568};  // points
  double scale = 1;        // window coordinates per point
  Point offset;            // window coordinates of the content's top-left corner
  double density = 1;      // pixels per window coordinate

  // The content fitted into a window of `windowSize` (window coordinates)
  // whose drawable has `density` pixels per coordinate. A degenerate window
  // or content gives scale 1 at the origin.
  static Viewport fit(Size content, Size windowSize, double density);

  double pixelsPerPoint() const { return scale * density; }
  // Window coordinates to points (may fall outside the content on the bars).
  Point pointFromWindow(Point windowPoint) const;
  // Points to drawable pixels (y down in both).
  AffineTransform pointsToPixels() const;
  // The content rectangle in pixels.
  Rect contentPixels() const;
};

// The scale, in window coordinates per point, at which a window of
// `content` points opens on a desktop whose usable area is `usable` (window
// coordinates): the largest multiple of a quarter that leaves `margin` free
// on every side, at least a quarter.
double openingScale(Size content, Size usable, double margin);

}  // namespace kit
