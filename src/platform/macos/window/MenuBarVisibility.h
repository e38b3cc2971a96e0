#pragma once

#include <string>

#include "ports/OverlayPanel.h"

namespace veloria {

/// What a person should be told about a band on this side of the menu bar; empty when it is seen. The menu bar lets the
/// light behind it through unless the system was told to reduce transparency.
std::string menuBarHint(OverlayLevel side, bool transparencyReduced);

}  // namespace veloria
