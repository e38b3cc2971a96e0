#pragma once

#include <functional>

namespace veloria {

/// Seconds on a clock that only goes forwards; its zero means nothing.
using MediaClock = std::function<double()>;

/// The system's monotonic clock, which stands still while the computer sleeps. On macOS it is the one by which frames
/// are shown (mach_absolute_time in seconds). Any thread.
double mediaTime();

/// A monotonic clock that also counts the time for which the system was suspended: for the age of things outside this
/// computer. Any thread.
double continuousTime();

/// Seconds since 1970, as the system's clock has it. Any thread.
double wallTime();

}  // namespace veloria
