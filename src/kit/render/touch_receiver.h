#pragma once

#include <vector>

#include "kit/foundation/geometry.h"

namespace kit {

// A view that handles touches itself (a banner, a close button, a modal
// panel). Mix it into a View subclass: a touch whose hit view is this view,
// or a descendant that is no receiver, arrives here instead of reaching
// anything below, in this view's bounds coordinates.
class TouchReceiver {
 public:
  virtual ~TouchReceiver() = default;
  virtual void touchesBegan(const std::vector<Point>& pointsInView) = 0;
};

}  // namespace kit
