#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/x11/X11Connection.h"

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

/// A strut, and the place of the window that asks for it, in root pixels.
struct DockStrut {
  PixelRect bounds;
  Strut strut;
  bool holdsTray = false;  ///< certainly the panel with the status icons
};

/// Reads the twelve numbers of _NET_WM_STRUT_PARTIAL or the four of _NET_WM_STRUT (then each edge counts over its whole
/// length, as it does if start and end are both 0). Nothing for any other count or a number above 65535.
std::optional<Strut> strutFromCardinals(std::span<const std::uint32_t> values, const PixelRect& root);

/// `monitor` without what the docks on it reserve. A strut counts on the monitors that its window touches; one that
/// would take more than half of a monitor is ignored there.
PixelRect visiblePixels(const PixelRect& monitor, const PixelRect& root, std::span<const DockStrut> docks);

/// The edge of the monitor's main panel: the one with the status icons, else the one that reserves the most room; the
/// top one if they are equal. Nothing if nothing is reserved at the top and the bottom.
std::optional<PanelEdge> mainPanelEdge(const PixelRect& monitor, const PixelRect& root,
                                       std::span<const DockStrut> docks);

/// `monitor` without the parts above and below `workArea`, for desktops that announce nothing but their work area; a
/// part that is more than half of the monitor does not count.
PixelRect visiblePixelsFromWorkArea(const PixelRect& monitor, const PixelRect& workArea);

/// The strut that a panel along the top or the bottom of `monitor` would have.
DockStrut strutAlong(const PixelRect& panel, const PixelRect& monitor, const PixelRect& root);

/// A panel of the desktop, as found on the server: a window of type DOCK, or one that reserves an edge.
struct DockWindow {
  xcb_window_t window = XCB_WINDOW_NONE;
  PixelRect bounds;  ///< root pixels
  std::uint8_t depth = 0;
  bool isDock = false;  ///< of type DOCK
  bool viewable = false;
  std::optional<Strut> strut;
};

/// The panel that certainly holds the status icons: their manager's window is in it, or it is the only panel of the
/// program that manages them. None if that is unknown. A few round trips.
xcb_window_t panelWithTray(X11Connection& connection, std::span<const DockWindow> docks);

/// All panels, without our own windows: from the window manager's clients and, for those it doesn't manage, from the
/// children of the root. Two round trips.
std::vector<DockWindow> findDocks(X11Connection& connection);

/// The children of the root, bottom to top.
std::vector<xcb_window_t> topLevelWindows(X11Connection& connection);

/// The child of the root that `window` is or is in (mostly a window manager's frame); none if it is gone.
xcb_window_t topLevelOf(X11Connection& connection, xcb_window_t window);

/// The place of one panel, and of the child of the root that holds it.
struct PanelPlace {
  xcb_window_t window = XCB_WINDOW_NONE;    ///< the panel's own
  xcb_window_t topLevel = XCB_WINDOW_NONE;  ///< the same, or the window manager's frame
  PixelRect bounds;                         ///< of the top-level with its border, root pixels
  std::uint8_t depth = 0;                   ///< of the top-level
  std::vector<PixelRect> shape;             ///< what the top-level covers of `bounds`, root pixels; empty: all of it
  std::size_t position = 0;                 ///< in the stack, 0 at the bottom
};

/// Nothing if `window` is gone, isn't shown, or is ours. `stack`: the children of the root, bottom to top. A few
/// round trips.
std::optional<PanelPlace> probePanel(X11Connection& connection, xcb_window_t window,
                                     std::span<const xcb_window_t> stack);

}  // namespace veloria
