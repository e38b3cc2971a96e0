#pragma once

namespace veloria {

/// Bounds how often something is tried again, so that two programs never fight for ever: at most `limit` attempts in a
/// row, and new ones only `pauseSeconds` after the last.
class AttemptBudget {
 public:
  constexpr AttemptBudget(int limit, double pauseSeconds) : limit_(limit), pauseSeconds_(pauseSeconds) {}

  /// True when one more attempt is allowed at `now` (seconds, any zero); counts it.
  constexpr bool take(double now) {
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

}  // namespace veloria
