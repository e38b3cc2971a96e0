#pragma once

#include <optional>
#include <vector>

#include "platform/linux/x11/DockStruts.h"
#include "platform/linux/x11/X11Connection.h"

namespace veloria {

/// A panel of the desktop, as found on the server: a window of type DOCK, or one that reserves an edge.
struct DockWindow {
  xcb_window_t window = XCB_WINDOW_NONE;
  PixelRect bounds;  ///< root pixels
  std::uint8_t depth = 0;
  bool isDock = false;  ///< of type DOCK
  bool viewable = false;
  std::optional<Strut> strut;
};

/// All panels but our own windows: among the window manager's clients and, for those it doesn't manage, the children of
/// the root. Two round trips.
std::vector<DockWindow> findDocks(X11Connection& connection);

/// The children of the root, bottom to top.
std::vector<xcb_window_t> topLevelWindows(X11Connection& connection);

/// The child of the root that `window` is or is in (a window manager's frame, mostly); none when it is gone.
xcb_window_t topLevelOf(X11Connection& connection, xcb_window_t window);

}  // namespace veloria
