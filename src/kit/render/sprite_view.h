#pragma once

#include <memory>
#include <string>

#include "kit/scene/scene.h"
#include "kit/ui/view.h"

namespace kit {

// A view that shows a scene (the platform's sprite view): the renderer draws
// the presented scene in the view's bounds by the scene's scale mode, clipped
// to them, and touches that land on this view (and on no view above it) go to
// the scene. The view only holds the scene; the application's frame driver
// runs it. Counters for the frame rate and the node count can be shown in the
// lower right corner.
class SpriteView : public View {
 public:
  explicit SpriteView(Rect frame = {});
  std::string className() const override { return "SpriteView"; }

  // Shows `scene` from the next frame on, replacing the one shown before.
  void presentScene(std::shared_ptr<Scene> scene) { scene_ = std::move(scene); }
  const std::shared_ptr<Scene>& scene() const { return scene_; }

  bool showsFPS() const { return showsFPS_; }
  void setShowsFPS(bool shows) { showsFPS_ = shows; }
  bool showsNodeCount() const { return showsNodeCount_; }
  void setShowsNodeCount(bool shows) { showsNodeCount_ = shows; }

  // Scene coordinates of a point in this view's bounds (the view's size and
  // the scene's scale mode decide); the point itself when no scene is shown.
  Point convertPointToScene(Point pointInView) const;

 protected:
  std::string describe() const override;

 private:
  std::shared_ptr<Scene> scene_;
  bool showsFPS_ = false;
  bool showsNodeCount_ = false;
};

}  // namespace kit
