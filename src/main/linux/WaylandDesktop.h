#pragma once

#include <memory>

#include "base/Environment.h"
#include "main/Desktop.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// Throws std::runtime_error if the compositor offers no overlays.
std::unique_ptr<Desktop> makeWaylandDesktop(std::unique_ptr<WaylandConnection> connection,
                                            const Environment& environment);

}  // namespace veloria
