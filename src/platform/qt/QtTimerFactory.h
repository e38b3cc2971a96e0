#pragma once

#include "ports/Timer.h"

namespace veloria {

/// Timers on Qt's event loop. They keep their rate on average, even if the interval is not a whole number of
/// milliseconds. The system may group the calls of a timer whose tolerance is at least a twentieth of its interval with
/// others. An interval that is not above 0 counts as one millisecond. Main thread, with a QCoreApplication.
class QtTimerFactory final : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double intervalSeconds, double toleranceSeconds,
                                   std::function<void()> action) override;
};

}  // namespace veloria
