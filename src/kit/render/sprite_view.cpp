#include "kit/render/sprite_view.h"

namespace kit {

SpriteView::SpriteView(Rect frame) : View(frame) {}

Point SpriteView::convertPointToScene(Point pointInView) const {
  if (!scene_)
    return pointInView;
  return scene_->convertPointFromView(pointInView, bounds().size);
}

std::string SpriteView::describe() const {
  if (!scene_)
    return "scene=none";
  const Size s = scene_->size();
  return "scene=" + std::to_string(static_cast<int>(s.width)) + "x" +
         std::to_string(static_cast<int>(s.height));
}

}  // namespace kit
