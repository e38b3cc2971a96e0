#pragma once

#include <optional>
#include <span>

#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/x11/X11Connection.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Writes all properties by which a window manager treats `window` as a band at this place. A window manager reads most
/// of them only when the window is mapped.
void writeWindowHints(X11Connection& connection, xcb_window_t window, OverlayLevel level, const PixelRect& place);

/// Writes the place alone, for a window that is mapped.
void writePlaceHints(X11Connection& connection, xcb_window_t window, const PixelRect& place);

/// Asks the window manager again for whatever of `level`'s states a mapped window has lost. True when anything was
/// missing.
bool reassertStates(X11Connection& connection, xcb_window_t window, OverlayLevel level);

/// Tells the window manager to stop managing `window`, which was just unmapped.
void announceWithdrawal(X11Connection& connection, xcb_window_t window);

/// Lets every click through: no pixel of the window takes input, whatever size it gets later. Window managers put a
/// frame around the window and copy the window's input region to it only if that is set while they manage it, so this
/// has to be repeated then.
void makeClickThrough(X11Connection& connection, xcb_window_t window);

/// A change of a window's place in the stack, as ConfigureWindow takes it.
struct Restacking {
  xcb_stack_mode_t mode = XCB_STACK_MODE_ABOVE;
  xcb_window_t sibling = XCB_WINDOW_NONE;  ///< none: against all windows
};

/// The change that puts `window` at its `level`; nothing if it is there. aboveMenuBar: over all `panels`. desktop:
/// under them and over other windows of type DESKTOP, and without a window manager also under everything else.
std::optional<Restacking> neededRestacking(X11Connection& connection, xcb_window_t window, OverlayLevel level,
                                           std::span<const xcb_window_t> panels);

/// Writes when a person last used the window, in the server's time. Some window managers let only the window that was
/// used last go over others of its kind.
void writeUserTime(X11Connection& connection, xcb_window_t window, xcb_timestamp_t time);

/// Makes the server report its time in a change of that property, which stays as it is.
void requestUserTimeReport(X11Connection& connection, xcb_window_t window);

/// Sends it.
void restack(X11Connection& connection, xcb_window_t window, const Restacking& change);

}  // namespace veloria
