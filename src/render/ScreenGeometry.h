#pragma once

#include <optional>
#include <string>

#include "base/Geometry.h"
#include "ports/ScreenProvider.h"
#include "render/StripGeometry.h"
#include "settings/ExtraSettings.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Measures screens. Stateless; any thread. Every result is finite for a screen that ScreenProvider may hand out,
/// whatever the settings hold.
struct ScreenGeometry {
  /// The camera housing in global coordinates (points, y upwards), flush with the screen's top edge; empty without one.
  static std::optional<Rect> notchRect(const Screen& screen);

  /// The largest of the housing's height (at the top), what panels reserve at the edge and the status bar's thickness;
  /// whole points. The first two are capped at the screen's height.
  static double menuBarHeight(const Screen& screen, PanelEdge edge = PanelEdge::top);

  /// The band's place by `layerMode`, `extraHeight`, `notchMode` and `notchPadding`. A NaN in either counts as 0; the
  /// padding is capped at the screen's longer side. A strip hangs on the chosen edge, or where the panel is, or at the
  /// top; the whole desktop is always upright.
  static StripGeometry geometry(const Screen& screen, const NimbraConfig& config,
                                EdgeChoice choice = EdgeChoice::automatic);

  /// The settings window's line about the housing of the main screen; empty without a main screen (null).
  static std::string description(const Screen* mainScreen);
};

}  // namespace veloria
