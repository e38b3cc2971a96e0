#pragma once

#include <functional>

namespace veloria {

/// Seconds on a clock that only goes forwards; its zero means nothing.
using MediaClock = std::function<double()>;

/// The system's monotonic clock. Any thread.
double mediaTime();

}  // namespace veloria
