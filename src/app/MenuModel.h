#pragma once

#include <string_view>

#include "ports/Menu.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// The quick menu for these settings. `version` is the program's, as people see it.
Menu quickMenu(const NimbraConfig& config, std::string_view version);

enum class ClickResponse { showMenu, openSettings, closeSettings };

/// What a click does. A menu never touches the settings that are open.
ClickResponse responseTo(Click click, bool controlHeld, bool settingsShown);

}  // namespace veloria
