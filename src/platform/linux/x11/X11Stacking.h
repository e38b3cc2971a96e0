#pragma once

#include <optional>
#include <span>

#include "platform/linux/x11/X11Connection.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// A change of a window's place in the stack, as ConfigureWindow takes it.
struct Restacking {
  xcb_stack_mode_t mode = XCB_STACK_MODE_ABOVE;
  xcb_window_t sibling = XCB_WINDOW_NONE;  ///< none: against all windows
};

/// What `window` needs to stand where `level` says, nothing when it does: at aboveMenuBar over all `panels`; at desktop
/// under them and over other windows of type DESKTOP, and without a window manager also under everything else.
std::optional<Restacking> neededRestacking(X11Connection& connection, xcb_window_t window, OverlayLevel level,
                                           std::span<const xcb_window_t> panels);

/// Sends it.
void restack(X11Connection& connection, xcb_window_t window, const Restacking& change);

}  // namespace veloria
