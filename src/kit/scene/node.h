#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/scene/action.h"
#include "kit/scene/affine_transform.h"

namespace kit {

class Node;
class PhysicsBody;
class Scene;
struct ActionContext;
struct RunningAction;

using NodePtr = std::shared_ptr<Node>;

// A node of the scene tree: a position in its parent's
// coordinates (points, origin lower left, y up), a rotation, an alpha, a
// hidden flag and a z position, all inherited by its children; an ordered
// list of children that it owns; the actions it runs; an optional physics
// body. Nodes are always held by shared_ptr (NodePtr). The parent link is a
// non-owning pointer that the parent clears when it lets the child go or
// dies. Main thread only.
class Node : public std::enable_shared_from_this<Node> {
 public:
  Node();
  virtual ~Node();
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  static NodePtr node() { return std::make_shared<Node>(); }

  // --- Properties -----------------------------------------------------------

  // In the parent's coordinate system.
  Point position() const { return position_; }
  void setPosition(Point p) {
    position_ = p;
    positionError_ = {};
  }
  // Radians, counter-clockwise; turns the node and its children about the
  // node's position.
  double zRotation() const { return zRotation_; }
  void setZRotation(double radians) {
    zRotation_ = radians;
    rotationError_ = 0;
  }
  // Multiplies down the tree. Values outside 0..1 are stored as given and
  // clamped where they are used (drawing).
  double alpha() const { return alpha_; }
  void setAlpha(double alpha) { alpha_ = alpha; }
  // A hidden node is not drawn, nor are its children. It still runs actions,
  // keeps its physics body and answers containsPoint.
  bool hidden() const { return hidden_; }
  void setHidden(bool hidden) { hidden_ = hidden; }
  // Relative to the parent: a node draws at the sum of the z positions from
  // the scene down to it; ties draw in tree order.
  double zPosition() const { return zPosition_; }
  void setZPosition(double z) { zPosition_ = z; }

  // --- Tree -------------------------------------------------------------------

  // Non-owning; null for a root.
  Node* parent() const { return parent_; }
  const std::vector<NodePtr>& children() const { return children_; }
  // Appends `child` after the existing children. A child that has a parent is
  // first taken from it. Adding a null node, the node itself or one of its
  // ancestors is refused (nothing happens).
  void addChild(NodePtr child);
  void removeFromParent();
  void removeAllChildren();
  // The scene at the root of this node's tree, or null (non-owning).
  Scene* scene() const;
  // Whether `ancestor` is this node or one of its ancestors.
  bool inParentHierarchy(const Node& ancestor) const;

  // --- Actions ----------------------------------------------------------------
  //
  // An action run on a node starts at the first action phase of a frame that
  // finds the node in the presented scene's tree, and that phase evaluates it
  // at elapsed time 0: a zero-duration action, a runBlock, or a sequence of
  // those finishes in that very phase. Later phases advance it by the frame
  // time (leftover time carries from one step of a sequence or repeat to the
  // next, so nothing drifts). Actions run during a frame's action phase (from
  // a completion block or a runBlock) start at the next frame's phase.
  //
  // Blocks (completion blocks and runBlock actions) never run inside the
  // tree walk: each phase collects the blocks that came due and runs them
  // after every node has been advanced, in the order they came due. A block
  // may therefore change the tree and the actions freely.
  //
  // Removing an action that has not ended (removeAllActions,
  // removeActionForKey, or a keyed replacement) drops its completion block
  // and any of its runBlocks not yet run; an animateWithTextures that was
  // asked to restore puts the previous texture back. A node that leaves the
  // tree keeps its actions; they are paused until it is back in a scene.

  void runAction(ActionPtr action);
  // `completion` runs once, after the action has ended.
  void runAction(ActionPtr action, std::function<void()> completion);
  // Replaces (removes) the action running under `withKey`, if any.
  void runAction(ActionPtr action, const std::string& withKey);
  // The description running under `key`, or null.
  ActionPtr actionForKey(const std::string& key) const;
  bool hasActions() const;
  // Actions running or waiting to start (each runAction call counts once).
  std::size_t actionCount() const { return actions_.size(); }
  void removeActionForKey(const std::string& key);
  void removeAllActions();

  // --- Physics ----------------------------------------------------------------

  // The body follows this node's position and rotation in the scene; it is in
  // the scene's physics world exactly while the node is in that scene's tree.
  // A body belongs to one node at a time: giving it to another node takes it
  // from the first.
  const std::shared_ptr<PhysicsBody>& physicsBody() const { return physicsBody_; }
  void setPhysicsBody(std::shared_ptr<PhysicsBody> body);

  // --- Geometry ---------------------------------------------------------------

  // The node's own content rectangle in the parent's coordinates (the bounding
  // box when rotated). A plain node has no content: an empty rectangle at its
  // position.
  virtual Rect frame() const;
  // frame() united with the children's accumulated frames, in the parent's
  // coordinates.
  Rect calculateAccumulatedFrame() const;
  // `point` is in the parent's coordinates; edges count as inside. Purely
  // geometric: alpha and hidden are not consulted.
  bool containsPoint(Point point) const;

  // Node coordinates to the parent's.
  AffineTransform transform() const;
  // Node coordinates to the root's (the scene's when in a scene).
  AffineTransform sceneTransform() const;
  // `point` given in `node`'s coordinates, expressed in this node's. Both are
  // expected in the same tree; otherwise each is taken relative to its root.
  Point convertPointFromNode(Point point, const Node& node) const;
  // `point` given in this node's coordinates, expressed in `node`'s.
  Point convertPointToNode(Point point, const Node& node) const;

  // Grows whenever what the node draws changes (texture, colour, size,
  // anchor, label text or font), not on moves or fades: a renderer can cache
  // a rasterisation per node and version.
  uint64_t contentVersion() const { return contentVersion_; }

 protected:
  void contentChanged() { ++contentVersion_; }

 private:
  friend class Scene;
  friend class PhysicsWorld;
  friend struct ActionAccess;

  // Relative moves from actions. Each keeps a compensated (Kahan) sum, so
  // that long runs of small steps, such as a line scrolling down and jumping
  // back for hours, do not accumulate rounding error in the position. A
  // direct set starts the sum afresh.
  void translateBy(Vector delta);
  void rotateBy(double radians);

  // Advances every started action by dt and starts the new ones at elapsed 0.
  void advanceActions(double dt, ActionContext& context);
  void cancelAction(RunningAction& entry);
  void addAction(ActionPtr action, std::string key, std::function<void()> completion);

  Point position_;
  Vector positionError_;
  double zRotation_ = 0;
  double rotationError_ = 0;
  double alpha_ = 1;
  bool hidden_ = false;
  double zPosition_ = 0;
  uint64_t contentVersion_ = 0;

  Node* parent_ = nullptr;
  std::vector<NodePtr> children_;
  std::vector<std::shared_ptr<RunningAction>> actions_;
  std::shared_ptr<PhysicsBody> physicsBody_;
};

}  // namespace kit
