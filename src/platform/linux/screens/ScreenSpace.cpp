#include "platform/linux/screens/ScreenSpace.h"

#include <cmath>

namespace veloria {

namespace {

constexpr double lowestCoordinate = -32768;
constexpr double highestCoordinate = 32767;
constexpr int largestSide = 32767;

int edge(double pixels) {
  return static_cast<int>(std::lround(std::clamp(pixels, lowestCoordinate, highestCoordinate)));
}

bool finite(const Rect& rect) {
  return std::isfinite(rect.minX()) && std::isfinite(rect.minY()) && std::isfinite(rect.maxX()) &&
         std::isfinite(rect.maxY());
}

}  // namespace

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
  const int left = std::max(a.x, b.x);
  const int top = std::max(a.y, b.y);
  const PixelRect shared{left, top, std::min(a.right(), b.right()) - left, std::min(a.bottom(), b.bottom()) - top};
  return shared.empty() ? PixelRect{} : shared;
}

Rect ScreenSpace::toPoints(const PixelRect& pixels) const {
  return {(pixels.x - originX) / scale, (originBottom - pixels.bottom()) / scale, pixels.width / scale,
          pixels.height / scale};
}

PixelRect ScreenSpace::toPixels(const Rect& points, double pixelsPerPoint) const {
  if (points.empty() || !finite(points)) return {};
  const double factor = pixelsPerPoint > 0 && std::isfinite(pixelsPerPoint) ? pixelsPerPoint : scale;
  const int left = edge(originX + std::round(points.minX() * factor));
  const int right = edge(originX + std::round(points.maxX() * factor));
  const int top = edge(originBottom - std::round(points.maxY() * factor));
  const int bottom = edge(originBottom - std::round(points.minY() * factor));
  const PixelRect result{left, top, std::min(right - left, largestSide), std::min(bottom - top, largestSide)};
  return result.empty() ? PixelRect{} : result;
}

}  // namespace veloria
