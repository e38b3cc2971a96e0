#pragma once

#include <string>

/// What a person is told about a band that lies under a panel, and what to do about it.
namespace veloria {

std::string opaquePanelHint();
std::string unknownPanelHint();
/// For desktops that don't say whether there is a panel, nor how high it is.
std::string untoldPanelHint();

}  // namespace veloria
