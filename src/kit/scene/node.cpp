#include "kit/scene/node.h"

#include <algorithm>
#include <utility>

#include "kit/foundation/assert.h"
#include "kit/scene/action_run.h"
#include "kit/scene/physics_body.h"
#include "kit/scene/scene.h"

namespace kit {

namespace {

// One step of a Kahan sum: `sum` stays within an ulp or so of the exact total
// of everything added, however many small terms come in.
void compensatedAdd(double& sum, double& error, double term) {
  const double y = term - error;
  const double t = sum + y;
  error = (t - sum) - y;
  sum = t;
}

}  // namespace

Node::Node() = default;

Node::~Node() {
  for (auto& child : children_)
    child->parent_ = nullptr;
  if (physicsBody_)
    physicsBody_->node_ = nullptr;
}

// --- Tree ---------------------------------------------------------------------

void Node::addChild(NodePtr child) {
  if (!KIT_ASSERT(child != nullptr, "addChild of a null node") ||
      !KIT_ASSERT(!inParentHierarchy(*child), "addChild of the node itself or an ancestor"))
    return;
  child->removeFromParent();
  child->parent_ = this;
  children_.push_back(std::move(child));
}

void Node::removeFromParent() {
  if (!parent_)
    return;
  auto& siblings = parent_->children_;
  parent_ = nullptr;
  auto it = std::find_if(siblings.begin(), siblings.end(),
                         [this](const NodePtr& n) { return n.get() == this; });
  if (it == siblings.end())
    return;
  // The parent's reference may be the last one: let it go only once nothing
  // else of this node is touched.
  NodePtr last = std::move(*it);
  siblings.erase(it);
}

void Node::removeAllChildren() {
  auto leaving = std::move(children_);
  children_.clear();
  for (auto& child : leaving)
    child->parent_ = nullptr;
}

Scene* Node::scene() const {
  const Node* root = this;
  while (root->parent_)
    root = root->parent_;
  return dynamic_cast<Scene*>(const_cast<Node*>(root));
}

bool Node::inParentHierarchy(const Node& ancestor) const {
  for (const Node* n = this; n; n = n->parent_) {
    if (n == &ancestor)
      return true;
  }
  return false;
}

// --- Actions ------------------------------------------------------------------

void Node::addAction(ActionPtr action, std::string key, std::function<void()> completion) {
  if (!action)
    return;
  if (!key.empty())
    removeActionForKey(key);
  auto entry = std::make_shared<RunningAction>();
  entry->run = action->makeRun();
  entry->action = std::move(action);
  entry->key = std::move(key);
  entry->completion = std::move(completion);
  actions_.push_back(std::move(entry));
}

void Node::runAction(ActionPtr action) {
  addAction(std::move(action), {}, {});
}

void Node::runAction(ActionPtr action, std::function<void()> completion) {
  addAction(std::move(action), {}, std::move(completion));
}

void Node::runAction(ActionPtr action, const std::string& withKey) {
  addAction(std::move(action), withKey, {});
}

ActionPtr Node::actionForKey(const std::string& key) const {
  for (const auto& entry : actions_) {
    if (!key.empty() && entry->key == key)
      return entry->action;
  }
  return nullptr;
}

bool Node::hasActions() const {
  return !actions_.empty();
}

void Node::cancelAction(RunningAction& entry) {
  entry.cancelled = true;
  if (entry.started)
    entry.run->cancel(*this);
}

void Node::removeActionForKey(const std::string& key) {
  auto it = std::find_if(actions_.begin(), actions_.end(),
                         [&](const auto& entry) { return !key.empty() && entry->key == key; });
  if (it == actions_.end())
    return;
  auto entry = std::move(*it);
  actions_.erase(it);
  cancelAction(*entry);
}

void Node::removeAllActions() {
  auto removed = std::move(actions_);
  actions_.clear();
  for (auto& entry : removed)
    cancelAction(*entry);
}

void Node::advanceActions(double dt, ActionContext& context) {
  // No user code runs here (blocks are only queued), so the list cannot
  // change under the loop; finished entries are compacted away in place.
  std::size_t kept = 0;
  for (std::size_t i = 0; i < actions_.size(); ++i) {
    auto& entry = actions_[i];
    const double step = entry->started ? dt : 0.0;
    entry->started = true;
    context.current = &entry;
    const bool finished = entry->run->advance(*this, step, context) >= 0;
    if (finished) {
      if (entry->completion)
        context.due.push_back({std::move(entry->completion), nullptr});
      continue;
    }
    if (kept != i)
      actions_[kept] = std::move(entry);
    ++kept;
  }
  actions_.resize(kept);
  context.current = nullptr;
}

void Node::translateBy(Vector delta) {
  compensatedAdd(position_.x, positionError_.x, delta.x);
  compensatedAdd(position_.y, positionError_.y, delta.y);
}

void Node::rotateBy(double radians) {
  compensatedAdd(zRotation_, rotationError_, radians);
}

// --- Physics ------------------------------------------------------------------

void Node::setPhysicsBody(std::shared_ptr<PhysicsBody> body) {
  if (body == physicsBody_)
    return;
  if (physicsBody_)
    physicsBody_->node_ = nullptr;
  if (body && body->node_ && body->node_ != this)
    body->node_->physicsBody_.reset();
  physicsBody_ = std::move(body);
  if (physicsBody_)
    physicsBody_->node_ = this;
}

// --- Geometry -----------------------------------------------------------------

Rect Node::frame() const {
  return {position_, {0, 0}};
}

Rect Node::calculateAccumulatedFrame() const {
  Rect result = frame();
  const AffineTransform toParent = transform();
  for (const auto& child : children_) {
    const Rect childFrame = child->calculateAccumulatedFrame();
    if (!childFrame.isEmpty())
      result = result.united(toParent.applyToRect(childFrame));
  }
  return result;
}

bool Node::containsPoint(Point point) const {
  return calculateAccumulatedFrame().contains(point);
}

AffineTransform Node::transform() const {
  AffineTransform t = zRotation_ == 0 ? AffineTransform{} : AffineTransform::rotation(zRotation_);
  t.tx = position_.x;
  t.ty = position_.y;
  return t;
}

AffineTransform Node::sceneTransform() const {
  if (!parent_)
    return {};
  AffineTransform t = transform();
  for (const Node* n = parent_; n->parent_; n = n->parent_)
    t = n->transform().concatenating(t);
  return t;
}

Point Node::convertPointFromNode(Point point, const Node& node) const {
  return sceneTransform().inverted().apply(node.sceneTransform().apply(point));
}

Point Node::convertPointToNode(Point point, const Node& node) const {
  return node.sceneTransform().inverted().apply(sceneTransform().apply(point));
}

}  // namespace kit
