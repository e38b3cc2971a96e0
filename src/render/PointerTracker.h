#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Geometry.h"
#include "base/MediaClock.h"
#include "ports/PointerSource.h"
#include "ports/Timer.h"

namespace veloria {

/// Asks where the pointer is, 60 times a second near the band and 20 times elsewhere, because windows that let clicks
/// through get no pointer events. Main thread. `timers` must outlive it.
class PointerTracker {
 public:
  PointerTracker(TimerFactory& timers, PointerSource source, MediaClock clock = mediaTime);
  PointerTracker(const PointerTracker&) = delete;
  PointerTracker& operator=(const PointerTracker&) = delete;

  /// Gets each sample near the band: the pointer in global points (y up) and its velocity in points per 60 Hz frame,
  /// zero for the first one. Once after it has left, and when tracking is switched off: no point, velocity zero. It may
  /// call setEnabled().
  std::function<void(const std::optional<Point>& point, Point velocity)> onSample;

  /// Where the band is, in global points (y up); samples are taken up to 120 points around it.
  Rect interestRect;

  /// Nothing happens when it is so already. Where the pointer can't be located no timer runs.
  void setEnabled(bool on);

  /// Whether the system tells where the pointer is, and for people why it doesn't.
  bool available() const { return source_.location != nullptr; }
  const std::string& reason() const { return source_.reason; }

 private:
  void schedule(double interval);
  void sample();
  void sampleInside(Point point);
  void sampleOutside();
  void report(const std::optional<Point>& point, Point velocity);

  TimerFactory& timers_;
  PointerSource source_;
  MediaClock clock_;
  std::unique_ptr<Timer> timer_;
  std::optional<Point> lastPoint_;
  double lastTime_ = 0;
  bool active_ = false;
  bool fastRate_ = false;
};

}  // namespace veloria
