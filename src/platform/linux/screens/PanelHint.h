#pragma once

#include <string>

/// Hints for a person whose band lies under a panel.
namespace veloria {

std::string opaquePanelHint();
std::string unknownPanelHint();
/// For desktops that report neither a panel nor its height.
std::string unreportedPanelHint();

}  // namespace veloria
