#pragma once

namespace veloria {

/// The rate of the bands while the device can't keep up: an even fraction of the wanted one (all, a half, a third, a
/// quarter), so that the frames stay evenly spaced. Main thread.
class RatePlan {
 public:
  static constexpr double period = 0.5;  ///< seconds between calls of judge()

  /// `load`: the share of its time that the device would be busy at the wanted rate, 1 being all of it. To be called
  /// every `period` while frames are drawn. True if the divisor changed. It goes up after a second of too much work,
  /// and down after three seconds or more in which the faster rate would leave room; each time that this proves wrong
  /// within a minute, the wait doubles, up to two minutes.
  bool judge(double load);

  /// 1 to 4: what the wanted rate is divided by.
  int divisor() const { return divisor_; }

 private:
  int divisor_ = 1;
  int busy_ = 0;
  int idle_ = 0;
  int patience_ = shortestPatience;
  int sinceRaised_ = 1 << 20;

  static constexpr int shortestPatience = 6;
};

}  // namespace veloria
