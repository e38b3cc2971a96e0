#pragma once

#include <memory>
#include <string>

#include "main/Desktop.h"
#include "ports/DescriptorWatcher.h"
#include "ports/Timer.h"

namespace veloria {

/// Throws std::runtime_error where the display can't be opened or can't have overlays.
std::unique_ptr<Desktop> makeX11Desktop(const std::string& displayName, const DescriptorWatcher& watch,
                                        TimerFactory& timers);

}  // namespace veloria
