#pragma once

#include <functional>
#include <memory>

#include "ports/EventLoop.h"

namespace veloria {

/// Timers on Qt's event loop. They keep their rate on average, even if the interval is not a whole number of
/// milliseconds. The system may group the calls of a timer whose tolerance is at least a twentieth of its interval with
/// others. An interval that is not above 0 counts as one millisecond. Main thread, with a QCoreApplication.
class QtTimerFactory final : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double intervalSeconds, double toleranceSeconds,
                                   std::function<void()> action) override;
};

/// Calls `onReadable` on the event loop of the calling thread whenever `descriptor` can be read (or is at its end),
/// until the returned object is released, which `onReadable` itself may do. The caller owns the descriptor and keeps it
/// open while it is watched. Main thread, with a QCoreApplication.
std::shared_ptr<void> watchDescriptor(int descriptor, std::function<void()> onReadable);

}  // namespace veloria
