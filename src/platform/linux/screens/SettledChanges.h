#pragma once

#include <functional>
#include <memory>

#include "ports/Timer.h"

namespace veloria {

/// Acts once for a burst of changes: 250 ms after the last one, 2 s after the first one at the latest. Main thread.
class SettledChanges {
 public:
  /// `timers` must outlive it. `action` may note further changes.
  SettledChanges(TimerFactory& timers, std::function<void()> action);

  void note();

 private:
  void actIfSettled();

  TimerFactory& timers_;
  std::function<void()> action_;
  std::unique_ptr<Timer> pending_;
  double firstChange_ = 0;
  double lastChange_ = 0;
};

}  // namespace veloria
