#pragma once

#include <functional>
#include <memory>

namespace veloria {

/// A repeating timer on the main thread. It stops when it is destroyed.
class Timer {
 public:
  virtual ~Timer() = default;
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

 protected:
  Timer() = default;
};

/// Makes timers on the main thread's event loop.
class TimerFactory {
 public:
  virtual ~TimerFactory() = default;
  /// Calls `action` every `intervalSeconds` (above 0) until the timer is destroyed, which `action` itself may do. The
  /// system may delay a call by up to `toleranceSeconds` to save power. Missed calls are not made up for.
  virtual std::unique_ptr<Timer> repeating(double intervalSeconds, double toleranceSeconds,
                                           std::function<void()> action) = 0;
};

}  // namespace veloria
