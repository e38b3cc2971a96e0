#include "platform/qt/QtEventLoop.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/MediaClock.h"

namespace veloria {

namespace {

constexpr double shortestInterval = 0.001;
constexpr double longestInterval = 86400.0 * 20;  // Qt counts milliseconds in an int
constexpr double coarseShare = 0.05;              // what Qt's coarse timers may be off by

int milliseconds(double seconds) {
  return static_cast<int>(std::ceil(std::clamp(seconds, 0.0, longestInterval) * 1000.0));
}

class QtTimer final : public Timer {
 public:
  QtTimer(double interval, bool coarse, std::function<void()> action)
      : interval_(interval), action_(std::make_shared<std::function<void()>>(std::move(action))) {
    timer_.setTimerType(coarse ? Qt::CoarseTimer : Qt::PreciseTimer);
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, [this] { fire(); });
    deadline_ = mediaTime() + interval_;
    timer_.start(milliseconds(interval_));
  }

 private:
  void fire() {
    const auto action = action_;  // the action may destroy this timer
    armNext();
    (*action)();
  }

  // Qt's intervals are whole milliseconds: counting on from the last deadline keeps the rate.
  void armNext() {
    const double now = mediaTime();
    deadline_ += interval_;
    if (deadline_ < now) deadline_ = now + interval_;
    timer_.start(milliseconds(deadline_ - now));
  }

  double interval_;
  double deadline_ = 0;
  std::shared_ptr<std::function<void()>> action_;
  QTimer timer_;
};

double boundedInterval(double seconds) {
  return seconds > shortestInterval ? std::min(seconds, longestInterval) : shortestInterval;
}

}  // namespace

std::unique_ptr<Timer> QtTimerFactory::repeating(double intervalSeconds, double toleranceSeconds,
                                                 std::function<void()> action) {
  const double interval = boundedInterval(intervalSeconds);
  return std::make_unique<QtTimer>(interval, toleranceSeconds >= interval * coarseShare, std::move(action));
}

std::shared_ptr<void> watchDescriptor(int descriptor, std::function<void()> onReadable) {
  auto notifier = std::make_shared<QSocketNotifier>(descriptor, QSocketNotifier::Read);
  auto action = std::make_shared<std::function<void()>>(std::move(onReadable));
  QObject::connect(notifier.get(), &QSocketNotifier::activated, [action] {
    // The watch, and this closure with it, may end inside the call.
    const auto kept = action;  // NOLINT(performance-unnecessary-copy-initialization)
    (*kept)();
  });
  return notifier;
}

}  // namespace veloria
