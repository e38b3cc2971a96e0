#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/linux/screens/ScreenSpace.h"

namespace veloria {

/// One edge of a reservation: `thickness` pixels in from the edge of the root window, along `start` to `end` (both
/// included) of that edge.
struct StrutEdge {
  int thickness = 0;
  int start = 0;
  int end = 0;
  bool operator==(const StrutEdge&) const = default;
};

/// What one window reserves at the edges of the root window, as in _NET_WM_STRUT_PARTIAL.
struct Strut {
  StrutEdge left;
  StrutEdge right;
  StrutEdge top;
  StrutEdge bottom;
  bool operator==(const Strut&) const = default;

  bool empty() const {
    return left.thickness == 0 && right.thickness == 0 && top.thickness == 0 && bottom.thickness == 0;
  }
};

/// A strut and where the window that asks for it is, in root pixels.
struct DockStrut {
  PixelRect bounds;
  Strut strut;
};

/// Reads the twelve numbers of _NET_WM_STRUT_PARTIAL or the four of _NET_WM_STRUT (then each edge counts over its whole
/// length, as it does where start and end are both 0). Nothing for any other count or a number above 65535.
std::optional<Strut> strutFromCardinals(std::span<const std::uint32_t> values, const PixelRect& root);

/// `monitor` without what the docks on it reserve. A strut counts on the monitors that its window touches; one that
/// would take more than half of a monitor is ignored there.
PixelRect visiblePixels(const PixelRect& monitor, const PixelRect& root, std::span<const DockStrut> docks);

/// `monitor` without what lies above `workArea`, for desktops that announce nothing but their work area; the whole
/// monitor when that is more than half of it.
PixelRect visiblePixelsFromWorkArea(const PixelRect& monitor, const PixelRect& workArea);

}  // namespace veloria
