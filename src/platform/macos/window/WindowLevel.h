#pragma once

#include <optional>

#include "ports/OverlayPanel.h"

namespace veloria {

/// Levels of the system's own windows, as it tells them.
struct SystemLevels {
  int mainMenu = 0;
  int desktop = 0;
};

/// The level of an overlay window: one above the menu bar's or the desktop picture's. `debugLevel`
/// (NIMBRA_DEBUG_LEVEL) is taken as it is, whatever `side` says; what a level can't be becomes the nearest that can.
int windowLevel(OverlayLevel side, std::optional<long> debugLevel, const SystemLevels& system);

}  // namespace veloria
