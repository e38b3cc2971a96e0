#pragma once

#include "ports/Timer.h"

namespace veloria {

/// Timers on Qt's event loop. They keep their rate on average, also where the interval is no whole number of
/// milliseconds; calls of a timer whose tolerance is at least a twentieth of its interval may be moved together with
/// others by the system. An interval that is not above 0 counts as one millisecond. Main thread, with a
/// QCoreApplication.
class QtTimerFactory final : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double intervalSeconds, double toleranceSeconds,
                                   std::function<void()> action) override;
};

}  // namespace veloria
