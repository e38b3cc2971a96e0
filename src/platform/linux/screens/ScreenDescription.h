#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Geometry.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// A rectangle in X11's coordinates: pixels of the root window, y growing downwards, (x, y) the top left corner.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelRect&) const = default;

  int right() const { return x + width; }
  int bottom() const { return y + height; }
  bool empty() const { return width <= 0 || height <= 0; }
};

/// What two rectangles share; empty when they share nothing.
PixelRect intersection(const PixelRect& a, const PixelRect& b);
inline bool intersects(const PixelRect& a, const PixelRect& b) {
  return !intersection(a, b).empty();
}

/// Converts between root pixels (y down) and points (y up, from the bottom left corner of the first screen). All
/// conversions happen here.
struct ScreenSpace {
  int originX = 0;       ///< left edge of the first screen, root pixels
  int originBottom = 0;  ///< bottom edge of the first screen, root pixels
  double scale = 1;      ///< pixels per point, above 0
  bool operator==(const ScreenSpace&) const = default;

  Rect toPoints(const PixelRect& pixels) const;

  /// The top left corner of a pixel.
  Point toPoints(int x, int y) const { return {(x - originX) / scale, (originBottom - y) / scale}; }

  /// Each edge is rounded to a pixel by itself, so rectangles that touch in points touch in pixels. The result is cut
  /// to what a window can be (positions of 16 bits, sizes up to 32767); it is empty for a rectangle that is empty or
  /// not finite. `pixelsPerPoint` stands in for `scale`; it is ignored unless it is above 0 and finite.
  PixelRect toPixels(const Rect& points, double pixelsPerPoint) const;
};

/// One monitor as the display server reports it.
struct MonitorDescription {
  std::string name;
  PixelRect frame;
  PixelRect visible;  ///< `frame` without what panels reserve
  /// Where the main panel is, if the server tells; else it is taken to be where more is reserved.
  std::optional<PanelEdge> panel = {};
};

/// What the environment sets for the screens, in points.
struct ScreenOverrides {
  std::optional<double> barHeight;  ///< NIMBRA_BAR_HEIGHT
  std::optional<Extent> notch;      ///< NIMBRA_NOTCH
};

/// A number of points above 0 and up to 1000, written in decimal; nothing for any other text.
std::optional<double> parseBarHeight(std::string_view text);

/// "WIDTHxHEIGHT" in points, each above 0 and up to 10000, written in decimal; nothing for any other text.
std::optional<Extent> parseNotch(std::string_view text);

/// Reads both variables; an invalid value is reported in one line on the system log and ignored.
ScreenOverrides screenOverridesFromEnvironment();

/// Pixels per point from the text of the root window's RESOURCE_MANAGER: Xft.dpi / 96, rounded to a quarter, 1 to 4. 1
/// without the entry, and if its value is not a number from 24 to 960.
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
