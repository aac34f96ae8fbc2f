#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/scene/affine_transform.h"

namespace kit {

class LabelNode;
class Node;
class Scene;

// One thing to draw, with everything inherited from its ancestors already
// applied. Pointers and references stay valid until the tree or the node
// changes; build a fresh list each frame.
struct DrawItem {
  enum class Kind {
    Texture,  // the image `textureName`, stretched over the sprite rectangle
    Color,    // the sprite rectangle filled with `color`
    Label,    // the text of `label`
  };

  Kind kind = Kind::Color;
  const Node* node = nullptr;  // identity, for caches keyed on node + version
  uint64_t contentVersion = 0;
  // Node coordinates to scene coordinates (points, y up).
  AffineTransform transform;
  // Product of the alphas from the scene down, clamped to 0..1 (never 0: such
  // items are left out).
  double alpha = 1;
  double zPosition = 0;  // accumulated

  // Sprites: the rectangle in node coordinates is
  // (-anchor.x * size.width, -anchor.y * size.height, size).
  Size size;
  Point anchorPoint;
  const std::string* textureName = nullptr;  // Kind::Texture
  Color color;                               // Kind::Color

  const LabelNode* label = nullptr;  // Kind::Label: text, font, colour, alignment
};

// The visible nodes of `scene` in drawing order: ascending accumulated z
// position, ties in tree order (a parent before its children, siblings in
// the order added). A hidden node is left out with its whole subtree; so is a
// node whose accumulated alpha is 0. Sprites with nothing to show (no
// texture and a fully transparent colour, or an empty size) and labels
// without text are left out, but their children are not. The scene itself
// draws nothing.
std::vector<DrawItem> buildDrawList(const Scene& scene);

}  // namespace kit
