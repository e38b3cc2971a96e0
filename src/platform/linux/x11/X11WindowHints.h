#pragma once

#include "platform/linux/screens/ScreenSpace.h"
#include "platform/linux/x11/X11Connection.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Writes everything that tells a window manager what kind of window `window` is and where it belongs. A window manager
/// reads most of it only when the window is mapped.
void writeWindowHints(X11Connection& connection, xcb_window_t window, OverlayLevel level, const PixelRect& place);

/// Writes only where a window belongs, for one that is mapped.
void writePlaceHints(X11Connection& connection, xcb_window_t window, const PixelRect& place);

/// Asks the window manager again for whatever of `level`'s states a mapped window has lost. True when anything was
/// missing.
bool reassertStates(X11Connection& connection, xcb_window_t window, OverlayLevel level);

/// Tells the window manager that `window`, just unmapped, is not its business any more.
void announceWithdrawal(X11Connection& connection, xcb_window_t window);

/// Lets every click through: no pixel of the window takes input, whatever size it gets later. Window managers put a
/// frame around the window and give it the window's input region only when that is set while they manage it, so this
/// has to be repeated then.
void makeClickThrough(X11Connection& connection, xcb_window_t window);

}  // namespace veloria
