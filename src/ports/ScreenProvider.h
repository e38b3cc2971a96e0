#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/Geometry.h"

namespace veloria {

/// An edge of a screen along which a panel may lie.
enum class PanelEdge { top, bottom };

/// The edge as people call it: "top" or "bottom".
constexpr const char* nameOf(PanelEdge edge) {
  return edge == PanelEdge::top ? "top" : "bottom";
}

/// One screen as the system reports it. Rectangles are in points, in global coordinates: y grows upwards from the
/// bottom left corner of the first screen.
struct Screen {
  std::uint32_t number = 0;  ///< stable for one output, over reconnects and restarts; 0 when unknown
  std::string name;          ///< the output's name, for people
  Rect frame;
  Rect visibleFrame;                     ///< frame without what panels have reserved
  std::optional<PanelEdge> panelEdge;    ///< where the main panel is; nothing without one at the top or bottom
  double safeAreaTop = 0;                ///< height of a camera housing's row at the top; 0 without one
  std::optional<Rect> auxiliaryTopLeft;  ///< the usable parts of that row beside the housing
  std::optional<Rect> auxiliaryTopRight;
  double backingScale = 1;         ///< pixels per point, above 0
  double statusBarThickness = 24;  ///< the lowest height of a menu bar, points
  bool operator==(const Screen&) const = default;

  /// Points that panels have reserved at an edge; may be negative or not finite if the system reports nonsense.
  double reserved(PanelEdge edge) const {
    return edge == PanelEdge::top ? frame.maxY() - visibleFrame.maxY() : visibleFrame.minY() - frame.minY();
  }
  /// The edge that `band` hangs on: the bottom if it does not reach the top.
  PanelEdge edgeOf(const Rect& band) const { return band.maxY() < frame.maxY() ? PanelEdge::bottom : PanelEdge::top; }
};

/// Port: the screens. Main thread.
class ScreenProvider {
 public:
  virtual ~ScreenProvider() = default;
  /// All screens, the one with the menu bar first; may be empty. Sizes are validated: above 0, at most 65535 pixels.
  virtual std::vector<Screen> screens() = 0;
  /// Called after the list has changed, once for a burst of changes.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
};

}  // namespace veloria
