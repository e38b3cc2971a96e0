#pragma once

#include <string>
#include <vector>

#include "ports/SystemPort.h"

namespace veloria {

/// A program and its arguments.
using SettingsCommand = std::vector<std::string>;

/// The commands that show a pane of a desktop's own settings, best first: those that are not installed are to be passed
/// over. `desktops` are its names in lower case, the most specific one first; none of them known: no command.
std::vector<SettingsCommand> paneCommands(const std::vector<std::string>& desktops, SystemPane pane);

}  // namespace veloria
