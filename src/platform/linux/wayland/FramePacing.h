#pragma once

#include <algorithm>

namespace veloria {

/// When frames are due that come at a rate of their own and only when the compositor asks for one. Times are seconds
/// from any zero.
class FramePacing {
 public:
  /// Frames per second, above 0.
  constexpr void setRate(double rate) { interval_ = 1 / rate; }

  /// True for a frame at `now`. One that would be due before the compositor's next word counts as due: a display's
  /// rate that is a little above the wanted one must not be halved.
  constexpr bool due(double now) const { return wait(now) <= interval_ * slack; }

  /// Seconds until the next frame, 0 when it is late.
  constexpr double wait(double now) const { return std::max(0.0, next_ - now); }

  /// A frame is drawn at `now`. Frames that were missed are not made up for.
  constexpr void drawn(double now) { next_ = std::max(next_, now - interval_ * slack) + interval_; }

 private:
  static constexpr double slack = 0.25;
  double interval_ = 1.0 / 60;
  double next_ = 0;
};

}  // namespace veloria
