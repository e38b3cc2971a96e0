#include "render/PointerTracker.h"

#include <algorithm>
#include <utility>

namespace veloria {

namespace {

constexpr double slowInterval = 0.05;
constexpr double fastInterval = 1.0 / 60;
constexpr double toleranceShare = 0.3;
constexpr double margin = 120;
constexpr double shortestStep = 1.0 / 240;
constexpr double frameRate = 60;

}  // namespace

PointerTracker::PointerTracker(TimerFactory& timers, PointerSource source, MediaClock clock)
    : timers_(timers), source_(std::move(source)), clock_(std::move(clock)) {}

void PointerTracker::setEnabled(bool on) {
  if (on == active_) return;
  active_ = on;
  timer_.reset();
  lastPoint_.reset();
  fastRate_ = false;
  if (!on) {
    follow({});
    return report(std::nullopt, {});
  }
  if (available()) schedule(slowInterval);
}

void PointerTracker::schedule(double interval) {
  timer_.reset();
  timer_ = timers_.repeating(interval, interval * toleranceShare, [this] { sample(); });
}

void PointerTracker::sample() {
  const Rect near = interestRect.inset(-margin, -margin);
  follow(near);
  const std::optional<Point> point = source_.location();
  const bool inside = point && near.contains(*point);
  if (inside != fastRate_) {
    fastRate_ = inside;
    schedule(inside ? fastInterval : slowInterval);
  }
  if (inside) {
    sampleInside(*point);
  } else {
    sampleOutside();
  }
}

void PointerTracker::sampleInside(Point point) {
  const double now = clock_();
  Point velocity;
  if (lastPoint_ && lastTime_ > 0) {
    const double frames = std::max(now - lastTime_, shortestStep) * frameRate;
    velocity = {(point.x - lastPoint_->x) / frames, (point.y - lastPoint_->y) / frames};
  }
  lastPoint_ = point;
  lastTime_ = now;
  report(point, velocity);
}

void PointerTracker::sampleOutside() {
  if (!lastPoint_) return;
  lastPoint_.reset();
  report(std::nullopt, {});
}

void PointerTracker::follow(const Rect& place) {
  if (source_.follow) source_.follow(place);
}

void PointerTracker::report(const std::optional<Point>& point, Point velocity) {
  if (onSample) onSample(point, velocity);
}

}  // namespace veloria
