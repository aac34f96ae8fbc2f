#include "kit/scene/touch.h"

#include "kit/scene/node.h"

namespace kit {

Point Touch::locationInNode(const Node& node) const {
  return node.sceneTransform().inverted().apply(location_);
}

}  // namespace kit
