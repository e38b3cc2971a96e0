#pragma once

#include <memory>

#include "base/Environment.h"
#include "main/Desktop.h"
#include "ports/DescriptorWatcher.h"
#include "ports/Timer.h"

namespace veloria {

/// Opens the desktop that chooseDesktop() says. `timers` must outlive it. Throws WorkError where there is none, and
/// std::runtime_error for one that can't be used.
std::unique_ptr<Desktop> openDesktop(const Environment& environment, const DescriptorWatcher& watch,
                                     TimerFactory& timers);

}  // namespace veloria
