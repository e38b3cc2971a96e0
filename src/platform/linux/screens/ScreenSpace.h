#pragma once

#include <algorithm>

#include "base/Geometry.h"

namespace veloria {

/// A rectangle in X11's coordinates: pixels of the root window, y growing downwards, (x, y) the top left corner.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelRect&) const = default;

  int right() const { return x + width; }
  int bottom() const { return y + height; }
  bool empty() const { return width <= 0 || height <= 0; }
};

/// What two rectangles share; empty when they share nothing.
PixelRect intersection(const PixelRect& a, const PixelRect& b);
inline bool intersects(const PixelRect& a, const PixelRect& b) {
  return !intersection(a, b).empty();
}

/// The one place where X11's coordinates are turned over: between root pixels (y down) and points (y up, from the
/// bottom left corner of the first screen).
struct ScreenSpace {
  int originX = 0;       ///< left edge of the first screen, root pixels
  int originBottom = 0;  ///< bottom edge of the first screen, root pixels
  double scale = 1;      ///< pixels per point, above 0
  bool operator==(const ScreenSpace&) const = default;

  Rect toPoints(const PixelRect& pixels) const;

  /// The top left corner of a pixel.
  Point toPoints(int x, int y) const { return {(x - originX) / scale, (originBottom - y) / scale}; }

  /// Each edge is rounded to a pixel by itself, so rectangles that touch in points touch in pixels. The result is cut
  /// to what a window can be (positions of 16 bits, sizes up to 32767); it is empty for a rectangle that is empty or
  /// not finite. `pixelsPerPoint` stands in for `scale`; it is ignored unless it is above 0 and finite.
  PixelRect toPixels(const Rect& points, double pixelsPerPoint) const;
};

}  // namespace veloria
