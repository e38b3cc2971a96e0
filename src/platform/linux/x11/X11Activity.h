#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria {

/// What is known about a window that asks for the whole screen.
struct FullScreenWindow {
  bool viewable = false;                        ///< it and all that it is in are mapped
  bool hidden = false;                          ///< minimised: some window managers leave such windows mapped
  bool desktop = false;                         ///< it is the desktop itself
  std::optional<std::uint32_t> onDesktop = {};  ///< the number of its virtual desktop; nothing if it has none
  PixelRect bounds = {};                        ///< root pixels
};

/// The virtual desktops of a window manager.
struct DesktopsShown {
  std::optional<std::uint32_t> current = {};  ///< nothing if there are none
  /// Each monitor shows a desktop of its own, and `current` is only the one with the focus.
  bool perMonitor = false;
};

/// From the numbers of _NET_CURRENT_DESKTOP and _NET_DESKTOP_VIEWPORT. Viewports tell a
/// desktop for each monitor from one for all: each of the former begins at its monitor, all others at (0, 0).
DesktopsShown desktopsShown(std::span<const std::uint32_t> current, std::span<const std::uint32_t> viewports);

/// True if the window is seen in front of everything on `screen` (root pixels): it covers more than half of it, and is
/// neither minimised nor on a virtual desktop that is not shown.
bool coversScreen(const FullScreenWindow& window, const DesktopsShown& desktops, const PixelRect& screen);

/// Whether another program's full-screen window (state _NET_WM_STATE_FULLSCREEN) is in front on the first screen. Main
/// thread.
class X11FullScreen {
 public:
  /// Both must outlive it.
  X11FullScreen(X11Connection& connection, X11ScreenProvider& screens);

  /// False without a screen. Two round trips, three while any window asks for a whole screen; call it about once a
  /// second. Events would not do: when a window that already has the screen's size becomes full-screen, the root window
  /// gets none.
  bool isActive();

 private:
  std::vector<xcb_window_t> fullScreenWindows();
  std::vector<FullScreenWindow> describe(const std::vector<xcb_window_t>& windows);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
};

/// True when power management is on and has put the displays into any state but the first, in which they show
/// something (`level` as DPMS counts: 0 on, 1 standby, 2 suspend, 3 off).
constexpr bool displaysAreOff(bool enabled, std::uint16_t level) {
  return enabled && level != 0;
}

/// Whether the displays are without power. The server sends no event for it, so it has to be polled. Main thread.
class X11Dpms {
 public:
  /// `connection` must outlive it.
  explicit X11Dpms(X11Connection& connection);

  /// False if the server doesn't manage the displays' power; then poll() does nothing.
  bool available() const { return available_; }
  /// Called from poll() with every change; displays are on at first. Set it before the first poll().
  void setHandler(std::function<void(bool off)> handler) { handler_ = std::move(handler); }
  /// One round trip. Displays of a server that is gone count as on.
  void poll();

 private:
  bool areOff();

  X11Connection& connection_;
  bool available_ = false;
  bool off_ = false;
  std::function<void(bool)> handler_;
};

}  // namespace veloria
