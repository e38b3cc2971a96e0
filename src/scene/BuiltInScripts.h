#pragma once

#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The script of a drive mode; empty for autonomous and script, which have none.
std::string_view builtInScript(Visualizer mode);

/// The script that these settings select: the mode's built-in one, or the user's own as a view into `settings`.
std::string_view sceneScript(const NimbraConfig& settings);

}  // namespace veloria
