#pragma once

#include <string>

#include "ports/SystemPort.h"

namespace veloria {

/// The identifier of a pane of System Settings.
const char* paneIdentifier(SystemPane pane);

/// The address that opens a pane.
std::string paneAddress(SystemPane pane);

}  // namespace veloria
