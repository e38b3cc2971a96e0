#pragma once

#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The script that comes with a drive mode; empty for the two that have none (autonomous, script).
std::string_view builtInScript(Visualizer mode);

/// The script that these settings ask for: the built-in one of their mode, or the person's own. A view into `settings`.
std::string_view sceneScript(const NimbraConfig& settings);

}  // namespace veloria
