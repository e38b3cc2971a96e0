#pragma once

#include <functional>

namespace veloria {

/// Seconds of a monotonic clock with an arbitrary zero.
using MediaClock = std::function<double()>;

/// The system's monotonic clock, which stops while the computer sleeps. On macOS it is the clock of frame times
/// (mach_absolute_time in seconds). Any thread.
double mediaTime();

/// A monotonic clock that goes on during sleep: for the age of data from outside this computer. Any thread.
double continuousTime();

/// Seconds since 1970 by the system's clock. Any thread.
double wallTime();

}  // namespace veloria
