#pragma once

#include <algorithm>

namespace kit {

// Points, sizes and rectangles in points (the platform's CGPoint, CGSize,
// CGRect). Plain values; doubles throughout, evaluated left to right.
struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

// Origin plus size. In the scene graph the origin is the lower-left corner
// (y up); in the view tree it is the upper-left corner (y down).
struct Rect {
  Point origin;
  Size size;

  double minX() const { return origin.x; }
  double minY() const { return origin.y; }
  double maxX() const { return origin.x + size.width; }
  double maxY() const { return origin.y + size.height; }
  double midX() const { return origin.x + size.width * 0.5; }
  double midY() const { return origin.y + size.height * 0.5; }
  bool isEmpty() const { return size.width <= 0 || size.height <= 0; }

  // Edges included, as the platform's containment test.
  bool contains(Point p) const {
    return p.x >= minX() && p.x <= maxX() && p.y >= minY() && p.y <= maxY();
  }
  // Smallest rectangle holding both; an empty rectangle adds nothing.
  Rect united(const Rect& o) const {
    if (isEmpty())
      return o;
    if (o.isEmpty())
      return *this;
    double x0 = std::min(minX(), o.minX()), y0 = std::min(minY(), o.minY());
    double x1 = std::max(maxX(), o.maxX()), y1 = std::max(maxY(), o.maxY());
    return {{x0, y0}, {x1 - x0, y1 - y0}};
  }
  friend bool operator==(const Rect&, const Rect&) = default;
};

using Vector = Point;  // a displacement (the platform's CGVector)

}  // namespace kit
