#include "platform/linux/x11/DockStruts.h"

namespace veloria {

namespace {

constexpr std::uint32_t largestValue = 65535;
constexpr std::size_t edgeCount = 4;
constexpr std::size_t partialCount = 12;

StrutEdge edgeOf(std::span<const std::uint32_t> values, std::size_t index, int length) {
  StrutEdge edge{static_cast<int>(values[index]), 0, length - 1};
  if (values.size() == partialCount) {
    const int start = static_cast<int>(values[edgeCount + 2 * index]);
    const int end = static_cast<int>(values[edgeCount + 2 * index + 1]);
    if (start != 0 || end != 0) edge = {edge.thickness, start, end};
  }
  return edge;
}

// How far an edge's reservation reaches into a span of the monitor that begins `gap` pixels in from the root's edge.
int reach(const StrutEdge& edge, int gap, int alongStart, int alongEnd, int depth) {
  const bool beside = edge.end < alongStart || edge.start >= alongEnd;
  const int inside = edge.thickness - gap;
  return edge.thickness == 0 || beside || inside <= 0 || inside > depth / 2 ? 0 : inside;
}

struct Insets {
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;
};

void grow(Insets& insets, const Strut& strut, const PixelRect& m, const PixelRect& root) {
  insets.left = std::max(insets.left, reach(strut.left, m.x - root.x, m.y, m.bottom(), m.width));
  insets.right = std::max(insets.right, reach(strut.right, root.right() - m.right(), m.y, m.bottom(), m.width));
  insets.top = std::max(insets.top, reach(strut.top, m.y - root.y, m.x, m.right(), m.height));
  insets.bottom = std::max(insets.bottom, reach(strut.bottom, root.bottom() - m.bottom(), m.x, m.right(), m.height));
}

}  // namespace

std::optional<Strut> strutFromCardinals(std::span<const std::uint32_t> values, const PixelRect& root) {
  if (values.size() != edgeCount && values.size() != partialCount) return std::nullopt;
  for (const std::uint32_t value : values) {
    if (value > largestValue) return std::nullopt;
  }
  return Strut{edgeOf(values, 0, root.height), edgeOf(values, 1, root.height), edgeOf(values, 2, root.width),
               edgeOf(values, 3, root.width)};
}

PixelRect visiblePixels(const PixelRect& monitor, const PixelRect& root, std::span<const DockStrut> docks) {
  Insets insets;
  for (const DockStrut& dock : docks) {
    if (intersects(dock.bounds, monitor)) grow(insets, dock.strut, monitor, root);
  }
  return {monitor.x + insets.left, monitor.y + insets.top, monitor.width - insets.left - insets.right,
          monitor.height - insets.top - insets.bottom};
}

PixelRect visiblePixelsFromWorkArea(const PixelRect& monitor, const PixelRect& workArea) {
  const int top = workArea.y - monitor.y;
  if (top <= 0 || top > monitor.height / 2) return monitor;
  return {monitor.x, monitor.y + top, monitor.width, monitor.height - top};
}

}  // namespace veloria
