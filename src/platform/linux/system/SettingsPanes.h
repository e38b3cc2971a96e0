#pragma once

#include <string>
#include <vector>

#include "ports/SystemPort.h"

namespace veloria {

/// A program and its arguments.
using SettingsCommand = std::vector<std::string>;

/// The commands that show a pane of a desktop's own settings, best first; the caller skips those that are not
/// installed. `desktops` are the desktop's names in lower case, the most specific first. Empty if none of them is
/// known.
std::vector<SettingsCommand> paneCommands(const std::vector<std::string>& desktops, SystemPane pane);

}  // namespace veloria
