#pragma once

#include <functional>
#include <memory>

#include "ports/EventLoop.h"

namespace veloria {

/// Bounds how often something is tried again, so that two programs never fight forever: at most `limit` attempts in a
/// row, and new ones only `pauseSeconds` after the last.
class AttemptBudget {
 public:
  constexpr AttemptBudget(int limit, double pauseSeconds) : limit_(limit), pauseSeconds_(pauseSeconds) {}

  /// True if one more attempt is allowed at `now` (seconds, any zero); counts it.
  constexpr bool spend(double now) {
    if (used_ > 0 && now - last_ >= pauseSeconds_) used_ = 0;
    if (used_ >= limit_) return false;
    ++used_;
    last_ = now;
    return true;
  }

  /// After this pause there are attempts again.
  constexpr double pauseSeconds() const { return pauseSeconds_; }

  /// All attempts are free again.
  constexpr void refill() { used_ = 0; }

 private:
  int limit_;
  double pauseSeconds_;
  int used_ = 0;
  double last_ = 0;
};

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
