#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Environment.h"

namespace veloria {

/// The names of the desktop in lower case, the most specific one first: from XDG_CURRENT_DESKTOP, or from
/// XDG_SESSION_DESKTOP if that has none. Any thread.
std::vector<std::string> desktopNames(const Environment& environment);
/// True if this is one of them.
bool isDesktop(const Environment& environment, std::string_view name);

}  // namespace veloria
