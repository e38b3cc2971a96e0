#pragma once

#include "platform/linux/x11/FullScreenWindow.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria {

/// Whether another program's full-screen window (state _NET_WM_STATE_FULLSCREEN) is in front on the first screen. Main
/// thread.
class X11FullScreen {
 public:
  /// After so many questions the server is asked again although it has told of no change: a window that was as large as
  /// the screen before may become a full-screen one without a trace on the root window.
  static constexpr int questionsBetweenLooks = 5;

  /// Both must outlive it.
  X11FullScreen(X11Connection& connection, X11ScreenProvider& screens);

  /// False when there is no screen. Costs nothing while windows stay as they are; else two round
  /// trips, three while any window asks for a whole screen.
  bool isActive();
  /// How often the server was asked.
  int looks() const { return looks_; }

 private:
  void handle(const xcb_generic_event_t& event);
  bool look();
  std::vector<xcb_window_t> fullScreenWindows();
  std::vector<FullScreenWindow> describe(const std::vector<xcb_window_t>& windows);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
  bool active_ = false;
  bool changed_ = true;
  int questions_ = 0;
  int looks_ = 0;
  X11Connection::Subscription events_;
  std::shared_ptr<void> refresh_;
};

}  // namespace veloria
