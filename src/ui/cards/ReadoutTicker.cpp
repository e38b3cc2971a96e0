#include "ui/cards/ReadoutTicker.h"

#include <utility>

namespace veloria {

ReadoutTicker::ReadoutTicker(QWidget* window, ReadoutSource source)
    : QObject(window), source_(std::move(source)), watch_(window, [this](bool seen) { setRunning(seen); }) {
  timer_.setInterval(intervalMs);
  timer_.setTimerType(Qt::CoarseTimer);
  connect(&timer_, &QTimer::timeout, this, &ReadoutTicker::ask);
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
