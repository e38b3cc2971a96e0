#include "ui/ReadoutTicker.h"

#include <utility>

#include "ui/VisibilityWatch.h"

namespace veloria {

ReadoutTicker::ReadoutTicker(QWidget* window, ReadoutSource source) : QObject(window), source_(std::move(source)) {
  timer_.setInterval(intervalMs);
  timer_.setTimerType(Qt::CoarseTimer);
  connect(&timer_, &QTimer::timeout, this, &ReadoutTicker::ask);
  const auto* watch = new VisibilityWatch(window, [this](bool seen) { setRunning(seen); });
  connect(watch, &QObject::destroyed, &timer_, &QTimer::stop);
  if (window->isVisible()) setRunning(true);
}

void ReadoutTicker::setRunning(bool on) {
  if (!on) return timer_.stop();
  ask();
  timer_.start();
}

void ReadoutTicker::ask() {
  if (source_) last_.set(source_());
}

}  // namespace veloria
