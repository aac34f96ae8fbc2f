#pragma once

#include "kit/foundation/geometry.h"

namespace kit::web {

// Places the page's canvas as the desktop places its window's content: the
// content's points scaled to fit the browser's viewport, aspect kept, centred
// on black (letterboxed), with a backing store of the shown size times the
// device pixel ratio so art is drawn at full device resolution. Touches and
// clicks map back from the canvas's CSS pixels to content points.
class PageLayout {
 public:
  explicit PageLayout(Size content) : content_(content) {}

  // Sizes and places the canvas for the viewport as it is now.
  void apply();
  // A point in the canvas element's CSS pixels as content points.
  Point toContent(double cssX, double cssY) const;
  Size content() const { return content_; }
  // CSS pixels per content point, as apply() last chose it.
  double cssScale() const { return cssScale_; }
  void setContent(Size content) { content_ = content; }

 private:
  Size content_;
  double cssScale_ = 1;  // CSS pixels per content point
};

}  // namespace kit::web
