#include "kit/scene/physics_body.h"

#include <cmath>

#include "kit/scene/node.h"

namespace kit {

namespace {

double nonNegative(double v) {
  return std::isfinite(v) && v > 0 ? v : 0.0;
}

}  // namespace

PhysicsBody::PhysicsBody(Shape shape, Size size)
    : shape_(shape), size_{nonNegative(size.width), nonNegative(size.height)} {}

std::shared_ptr<PhysicsBody> PhysicsBody::bodyWithRectangleOfSize(Size size) {
  return std::make_shared<PhysicsBody>(Shape::Rectangle, size);
}

std::shared_ptr<PhysicsBody> PhysicsBody::bodyWithCircleOfRadius(double radius) {
  const double d = 2 * nonNegative(radius);
  return std::make_shared<PhysicsBody>(Shape::Circle, Size{d, d});
}

void PhysicsBody::setCategoryBitMask(uint32_t mask) {
  if (mask == category_)
    return;
  category_ = mask;
  filterDirty_ = true;
}

void PhysicsBody::setContactTestBitMask(uint32_t mask) {
  if (mask == contactTest_)
    return;
  contactTest_ = mask;
  filterDirty_ = true;
}

std::shared_ptr<Node> PhysicsBody::node() const {
  return node_ ? node_->weak_from_this().lock() : nullptr;
}

}  // namespace kit
