#pragma once

#include <algorithm>
#include <limits>

namespace veloria {

/// When a request may start, so that one that is repeated for ever is no burden: the first at once, the next ones 1, 2,
/// 4, 8, 16 and then 30 seconds after the start of the one before. After a minute without a request all is forgotten.
/// What became of the requests does not matter: who got what it wanted does not ask again soon.
class RequestPacing {
 public:
  static constexpr double shortestGap = 1;
  static constexpr double longestGap = 30;
  static constexpr double memorySeconds = 60;

  /// For how many seconds to hold back a request that is made at `now` (seconds, any zero, never less than before).
  constexpr double delay(double now) {
    const double since = now - lastStart_;  // below 0 while one is held back
    gap_ = since >= memorySeconds ? 0 : std::clamp(gap_ * 2, shortestGap, longestGap);
    const double wait = std::max(gap_ - since, 0.0);
    lastStart_ = now + wait;
    return wait;
  }

 private:
  double gap_ = 0;
  double lastStart_ = -std::numeric_limits<double>::infinity();
};

}  // namespace veloria
