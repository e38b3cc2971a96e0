#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Geometry.h"
#include "base/MediaClock.h"
#include "ports/EventLoop.h"
#include "ports/PointerSource.h"

namespace veloria {

/// Polls the pointer's position, 60 times a second near the band and 20 times elsewhere: windows that let clicks
/// through get no pointer events. Main thread. `timers` must outlive it.
class PointerTracker {
 public:
  PointerTracker(TimerFactory& timers, PointerSource source, MediaClock clock = mediaTime);
  PointerTracker(const PointerTracker&) = delete;
  PointerTracker& operator=(const PointerTracker&) = delete;

  /// Called with each sample near the band: the pointer in global points (y up) and its velocity in points per 60 Hz
  /// frame, zero for the first one. Called without a point, velocity zero, once after the pointer has left and when
  /// tracking is switched off. May call setEnabled().
  std::function<void(const std::optional<Point>& point, Point velocity)> onSample;

  /// The band's place in global points (y up); "near" is up to 120 points around it.
  Rect interestRect;

  /// No effect if unchanged. No timer runs if the pointer can't be located.
  void setEnabled(bool on);

  /// Whether the system reports the pointer's position, and if not, why (for people).
  bool available() const { return source_.location != nullptr; }
  const std::string& reason() const { return source_.reason; }

 private:
  void schedule(double interval);
  void sample();
  void sampleInside(Point point);
  void sampleOutside();
  void follow(const Rect& place);
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
