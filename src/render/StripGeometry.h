#pragma once

#include <optional>

#include "base/Geometry.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// The band's place on one screen.
struct StripGeometry {
  Rect windowFrame;          ///< points, global coordinates (y upwards); never larger than the screen
  double menuBarHeight = 0;  ///< whole points
  /// The camera housing with its padding: points, from the window's top left corner, y downwards. It may reach beyond
  /// the window.
  std::optional<Rect> notch;
  double backingScale = 1;          ///< pixels per point
  PanelEdge edge = PanelEdge::top;  ///< at the bottom the picture is mirrored, so that the light leaves from the edge

  bool operator==(const StripGeometry&) const = default;
};

}  // namespace veloria
