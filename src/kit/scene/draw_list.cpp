#include "kit/scene/draw_list.h"

#include <algorithm>

#include "kit/scene/label_node.h"
#include "kit/scene/scene.h"
#include "kit/scene/sprite_node.h"

namespace kit {

namespace {

struct Inherited {
  const Node* node;
  AffineTransform toScene;
  double alpha;
  double z;
};

// Fills what `node` draws; false when it draws nothing itself.
bool describe(const Node& node, DrawItem& item) {
  if (const auto* sprite = dynamic_cast<const SpriteNode*>(&node)) {
    if (sprite->size().width <= 0 || sprite->size().height <= 0)
      return false;
    item.size = sprite->size();
    item.anchorPoint = sprite->anchorPoint();
    item.color = sprite->color();
    if (!sprite->texture().isNull()) {
      item.kind = DrawItem::Kind::Texture;
      item.textureName = &sprite->texture().name();
      return true;
    }
    item.kind = DrawItem::Kind::Color;
    return sprite->color().alpha > 0;
  }
  if (const auto* label = dynamic_cast<const LabelNode*>(&node)) {
    item.kind = DrawItem::Kind::Label;
    item.label = label;
    item.color = label->fontColor();
    return !label->text().empty();
  }
  return false;
}

}  // namespace

std::vector<DrawItem> buildDrawList(const Scene& scene) {
  std::vector<DrawItem> items;
  if (scene.hidden())
    return items;
  const double sceneAlpha = std::clamp(scene.alpha(), 0.0, 1.0);
  if (sceneAlpha <= 0)
    return items;

  // Pre-order walk, so that the stable sort below keeps tree order for ties.
  std::vector<Inherited> pending;
  for (auto it = scene.children().rbegin(); it != scene.children().rend(); ++it) {
    pending.push_back({it->get(), {}, sceneAlpha, 0});
  }
  while (!pending.empty()) {
    const Inherited parent = pending.back();
    pending.pop_back();
    const Node& node = *parent.node;
    if (node.hidden())
      continue;
    const double alpha = parent.alpha * std::clamp(node.alpha(), 0.0, 1.0);
    if (!(alpha > 0))
      continue;
    const AffineTransform toScene = parent.toScene.concatenating(node.transform());
    const double z = parent.z + node.zPosition();

    DrawItem item;
    if (describe(node, item)) {
      item.node = &node;
      item.contentVersion = node.contentVersion();
      item.transform = toScene;
      item.alpha = alpha;
      item.zPosition = z;
      items.push_back(item);
    }
    for (auto it = node.children().rbegin(); it != node.children().rend(); ++it) {
      pending.push_back({it->get(), toScene, alpha, z});
    }
  }
  std::stable_sort(items.begin(), items.end(),
                   [](const DrawItem& a, const DrawItem& b) { return a.zPosition < b.zPosition; });
  return items;
}

}  // namespace kit
