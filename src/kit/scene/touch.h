#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "kit/foundation/geometry.h"

namespace kit {

class Node;

// One finger (or click) of a touch-began event, located in the scene.
class Touch {
 public:
  explicit Touch(Point locationInScene) : location_(locationInScene) {}

  // The location in `node`'s coordinates; `node` is expected in the scene
  // that received the touch.
  Point locationInNode(const Node& node) const;
  Point locationInScene() const { return location_; }

 private:
  Point location_;
};

// The touches of one event, in the order the input layer reported them.
class TouchSet {
 public:
  TouchSet() = default;
  explicit TouchSet(std::vector<Touch> touches) : touches_(std::move(touches)) {}

  // One touch of the set (the first); null when the set is empty.
  const Touch* anyObject() const { return touches_.empty() ? nullptr : &touches_.front(); }
  std::size_t count() const { return touches_.size(); }
  bool empty() const { return touches_.empty(); }
  auto begin() const { return touches_.begin(); }
  auto end() const { return touches_.end(); }

 private:
  std::vector<Touch> touches_;
};

// What accompanies a touch set: when the event happened (the frame driver's
// monotonic time, seconds).
struct Event {
  double timestamp = 0;
};

}  // namespace kit
