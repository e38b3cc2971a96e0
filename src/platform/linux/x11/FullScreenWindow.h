#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/linux/screens/ScreenSpace.h"

namespace veloria {

/// What is known about a window that asks for the whole screen.
struct FullScreenWindow {
  bool viewable = false;                        ///< it and all that it is in are mapped
  bool hidden = false;                          ///< minimised: some window managers leave such windows mapped
  bool desktop = false;                         ///< it is the desktop itself
  std::optional<std::uint32_t> onDesktop = {};  ///< the number of its virtual desktop; nothing where it has none
  PixelRect bounds = {};                        ///< root pixels
};

/// The virtual desktops of a window manager.
struct DesktopsShown {
  std::optional<std::uint32_t> current = {};  ///< nothing where there are none
  /// Each monitor shows a desktop of its own, and `current` is only the one with the focus.
  bool perMonitor = false;
};

/// From the numbers of _NET_CURRENT_DESKTOP and _NET_DESKTOP_VIEWPORT. Desktops of their own for each monitor are told
/// by their viewports: each begins where its monitor does, while all others begin at (0, 0).
DesktopsShown desktopsShown(std::span<const std::uint32_t> current, std::span<const std::uint32_t> viewports);

/// True when the window is seen in front of what is on `screen` (root pixels): it covers more than half of it, and is
/// neither minimised nor on a virtual desktop that is not shown.
bool coversScreen(const FullScreenWindow& window, const DesktopsShown& desktops, const PixelRect& screen);

}  // namespace veloria
