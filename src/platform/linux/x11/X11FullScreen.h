#pragma once

#include "platform/linux/x11/FullScreenWindow.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria {

/// Whether another program's full-screen window (state _NET_WM_STATE_FULLSCREEN) is in front on the first screen. Main
/// thread.
class X11FullScreen {
 public:
  /// Both must outlive it.
  X11FullScreen(X11Connection& connection, X11ScreenProvider& screens);

  /// False when there is no screen. Two round trips, three while any window asks for a whole screen: to be called about
  /// once a second. Events would not do: a window that is as large as the screen already becomes a full-screen one
  /// without a trace on the root window.
  bool isActive();

 private:
  std::vector<xcb_window_t> fullScreenWindows();
  std::vector<FullScreenWindow> describe(const std::vector<xcb_window_t>& windows);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
};

}  // namespace veloria
