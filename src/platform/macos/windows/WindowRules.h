#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ports/OverlayPanel.h"
#include "ports/ScreenProvider.h"

/// What is decided about the band's windows and the screens, without a call of the system.
namespace veloria {

/// Levels of the system's own windows, as the system gives them.
struct SystemLevels {
  int mainMenu = 0;
  int desktop = 0;
};

/// The level of an overlay window: one above the menu bar's or the desktop picture's. `debugLevel`
/// (NIMBRA_DEBUG_LEVEL) replaces both, clamped to the range of int.
int windowLevel(OverlayLevel side, std::optional<long> debugLevel, const SystemLevels& system);

/// The rate to ask a view for, in whole frames a second: the nearest one, 1 to 240.
long viewFrameRate(double wanted);

/// Why a band on this side of the menu bar can't be seen, as text for a person; empty if it can. The menu bar lets the
/// light behind it through unless Reduce Transparency is on.
std::string menuBarHint(OverlayLevel side, bool transparencyReduced);

/// The screens that the port may return: those with a finite position and a size of at most 65535 pixels. An invalid
/// scale becomes 1.
std::vector<Screen> checkedScreens(std::vector<Screen> screens);

/// Whether a full-screen space is shown on the first of `screens` (the one with the menu bar): its menu bar takes no
/// room at the top. A menu bar that hides itself looks the same. False without a screen.
bool isFullScreenSpace(std::span<const Screen> screens);

}  // namespace veloria
