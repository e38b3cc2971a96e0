#pragma once

#include <algorithm>

namespace veloria {

/// A point in points (not pixels).
struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

/// A size in points.
struct Extent {
  double width = 0;
  double height = 0;
  bool operator==(const Extent&) const = default;
};

/// A rectangle in points. In global coordinates y grows upwards and (x, y) is the bottom left corner; code that uses y
/// downwards says so.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const Rect&) const = default;

  double minX() const { return x; }
  double maxX() const { return x + width; }
  double minY() const { return y; }
  double maxY() const { return y + height; }
  bool empty() const { return !(width > 0 && height > 0); }

  /// True if the point is inside; the low edges belong to the rectangle, the high ones don't.
  bool contains(Point p) const { return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY(); }

  /// The rectangle, smaller by dx and dy on each side (larger if negative).
  Rect inset(double dx, double dy) const { return {x + dx, y + dy, width - 2 * dx, height - 2 * dy}; }

  /// The smallest rectangle that contains both; an empty one is ignored.
  Rect united(const Rect& other) const {
    if (empty()) return other;
    if (other.empty()) return *this;
    const double left = std::min(minX(), other.minX());
    const double bottom = std::min(minY(), other.minY());
    return {left, bottom, std::max(maxX(), other.maxX()) - left, std::max(maxY(), other.maxY()) - bottom};
  }
};

}  // namespace veloria
