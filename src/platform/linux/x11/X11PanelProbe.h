#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/linux/x11/X11Connection.h"

namespace veloria {

/// Where one panel of the desktop is, seen from the child of the root that holds it.
struct PanelPlace {
  xcb_window_t window = XCB_WINDOW_NONE;    ///< the panel's own
  xcb_window_t topLevel = XCB_WINDOW_NONE;  ///< the same, or the window manager's frame
  PixelRect bounds;                         ///< of the top-level with its border, root pixels
  std::uint8_t depth = 0;                   ///< of the top-level
  std::vector<PixelRect> shape;             ///< what the top-level covers of `bounds`, root pixels; empty: all of it
  std::size_t position = 0;                 ///< in the stack, 0 at the bottom
};

/// Nothing when `window` is gone, isn't shown, or is ours. `stack`: the children of the root, bottom to top. A few
/// round trips.
std::optional<PanelPlace> probePanel(X11Connection& connection, xcb_window_t window,
                                     std::span<const xcb_window_t> stack);

}  // namespace veloria
