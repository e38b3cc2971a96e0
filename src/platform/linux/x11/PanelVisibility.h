#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/linux/screens/ScreenSpace.h"

namespace veloria {

/// What is known about one panel of the desktop.
struct PanelFacts {
  PixelRect bounds;                     ///< root pixels
  std::uint8_t depth = 24;              ///< of its pixels; 32 has an alpha channel
  std::uint32_t opacity = 0xFFFFFFFFU;  ///< _NET_WM_WINDOW_OPACITY
  std::optional<double> meanAlpha;      ///< 0 to 1, of its own pixels; nothing where they can't be read
};

/// Whether a panel lets through what is behind it.
enum class SeeThrough { yes, no, unknown };

SeeThrough seeThrough(const PanelFacts& panel, bool compositorRunning);

/// What to tell a person about a band on `strip` under `panels`: nothing unless panels that hide it, or may, cover at
/// least half of it.
std::string panelHint(const PixelRect& strip, std::span<const PanelFacts> panels, bool compositorRunning);

}  // namespace veloria
