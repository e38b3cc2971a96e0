#include "render/ScreenGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "base/Range.h"

namespace veloria {

namespace {

Rect windowFrame(const Screen& screen, const NimbraConfig& config, double menuBarHeight, PanelEdge edge) {
  const Rect& frame = screen.frame;
  if (config.layerMode == LayerMode::desktopFull) return frame;
  const double height = std::min(menuBarHeight + bounded(config.extraHeight, {0, frame.height}), frame.height);
  const double y = edge == PanelEdge::top ? frame.maxY() - height : frame.minY();
  return {frame.minX(), y, frame.width, height};
}

PanelEdge edgeFor(const Screen& screen, const NimbraConfig& config, EdgeChoice choice) {
  if (config.layerMode == LayerMode::desktopFull) return PanelEdge::top;
  if (choice == EdgeChoice::automatic) return screen.panelEdge.value_or(PanelEdge::top);
  return choice == EdgeChoice::top ? PanelEdge::top : PanelEdge::bottom;
}

/// The padding widens the housing on both sides but only lengthens it downwards: its top is the screen's edge.
std::optional<Rect> localNotch(const Screen& screen, const NimbraConfig& config, const Rect& window) {
  if (config.notchMode == NotchMode::ignore) return std::nullopt;
  const auto notch = ScreenGeometry::notchRect(screen);
  if (!notch) return std::nullopt;
  const double most = std::max(screen.frame.width, screen.frame.height);
  const double padding = std::isnan(config.notchPadding) ? 0 : bounded(config.notchPadding, {-most, most});
  const Rect local{notch->minX() - window.minX() - padding, 0, notch->width + 2 * padding, notch->height + padding};
  if (local.empty()) return std::nullopt;
  return local;
}

}  // namespace

std::optional<Rect> ScreenGeometry::notchRect(const Screen& screen) {
  if (!(screen.safeAreaTop > 0) || !screen.auxiliaryTopLeft || !screen.auxiliaryTopRight) return std::nullopt;
  const double left = screen.auxiliaryTopLeft->maxX();
  const double right = screen.auxiliaryTopRight->minX();
  if (!(left < right)) return std::nullopt;
  return Rect{left, screen.frame.maxY() - screen.safeAreaTop, right - left, screen.safeAreaTop};
}

double ScreenGeometry::menuBarHeight(const Screen& screen, PanelEdge edge) {
  const double housing = edge == PanelEdge::top ? screen.safeAreaTop : 0;
  const double measured = bounded(std::max(housing, screen.reserved(edge)), {0, screen.frame.height});
  return std::round(std::max(measured, screen.statusBarThickness));
}

StripGeometry ScreenGeometry::geometry(const Screen& screen, const NimbraConfig& config, EdgeChoice choice) {
  StripGeometry result;
  result.edge = edgeFor(screen, config, choice);
  result.menuBarHeight = menuBarHeight(screen, result.edge);
  result.windowFrame = windowFrame(screen, config, result.menuBarHeight, result.edge);
  if (result.edge == PanelEdge::top) result.notch = localNotch(screen, config, result.windowFrame);
  result.backingScale = screen.backingScale;
  return result;
}

std::string ScreenGeometry::description(const Screen* mainScreen) {
  if (mainScreen == nullptr) return "";
  const auto notch = notchRect(*mainScreen);
  if (!notch) return "No camera housing detected on this display.";
  std::array<char, 256> line{};
  std::snprintf(line.data(), line.size(), "Cutout %.0f × %.0f pt · menu bar %.0f pt tall.", notch->width, notch->height,
                menuBarHeight(*mainScreen));
  return line.data();
}

}  // namespace veloria
