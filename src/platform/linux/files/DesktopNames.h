#pragma once

#include <string>
#include <vector>

#include "base/Environment.h"

namespace veloria {

/// The names of the desktop in lower case, the most specific one first: those in XDG_CURRENT_DESKTOP, or in
/// XDG_SESSION_DESKTOP where that says nothing. Any thread.
std::vector<std::string> desktopNames(const Environment& environment);

}  // namespace veloria
