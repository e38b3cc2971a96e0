#pragma once

#include <string>

#include "ports/ScreenProvider.h"

/// Hints for a person whose band lies under a panel.
namespace veloria {

std::string opaquePanelHint(PanelEdge edge);
std::string unknownPanelHint(PanelEdge edge);
/// For a panel that is no window but drawn by the compositor itself, over all windows.
std::string desktopsOwnPanelHint(PanelEdge edge);
/// For desktops that report neither a panel nor its height.
std::string unreportedPanelHint();

}  // namespace veloria
