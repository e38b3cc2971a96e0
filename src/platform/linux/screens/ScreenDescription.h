#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Geometry.h"
#include "platform/linux/screens/ScreenSpace.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// One monitor as the display server reports it.
struct MonitorDescription {
  std::string name;
  PixelRect frame;
  PixelRect visible;  ///< `frame` without what panels reserve
};

/// What the environment says about the screens, in points.
struct ScreenOverrides {
  std::optional<double> barHeight;  ///< NIMBRA_BAR_HEIGHT
  std::optional<Extent> notch;      ///< NIMBRA_NOTCH
};

/// A number of points above 0 and up to 1000, written in decimal; nothing for any other text.
std::optional<double> parseBarHeight(std::string_view text);

/// "WIDTHxHEIGHT" in points, each above 0 and up to 10000, written in decimal; nothing for any other text.
std::optional<Extent> parseNotch(std::string_view text);

/// Reads both variables; a value that is none is reported in one line on the system log and ignored.
ScreenOverrides screenOverridesFromEnvironment();

/// Pixels per point from the text of the root window's RESOURCE_MANAGER: Xft.dpi / 96, rounded to a quarter, 1 to 4. 1
/// without the entry, and when its value is no number from 24 to 960.
double scaleFromResources(std::string_view resources);

/// A number for an output's name: 32-bit FNV-1a, never 0.
std::uint32_t screenNumberForName(std::string_view name);

/// The screen that has the camera housing: the first built-in panel (eDP, LVDS, DSI), else the first screen.
std::size_t notchScreenIndex(std::span<const MonitorDescription> monitors);

/// Leaves out what can't be a screen (no size, beyond 65535 pixels or the coordinate range) and those that show the
/// same rectangle as one before them.
std::vector<MonitorDescription> plausibleMonitors(std::vector<MonitorDescription> monitors);

/// The coordinate system in which `monitors` (the first one first) are described.
ScreenSpace spaceOf(std::span<const MonitorDescription> monitors, double scale);

/// The screens of `monitors`, in points and with y upwards, in the same order.
std::vector<Screen> describeScreens(std::span<const MonitorDescription> monitors, double scale,
                                    const ScreenOverrides& overrides);

}  // namespace veloria
