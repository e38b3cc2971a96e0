#include "system/SystemState.h"

#include <cmath>

namespace veloria {

SystemState::SystemState(SystemPort& port, TimerFactory& timers) : port_(port), timers_(timers) {
  port_.setChangeHandler([this] { refresh(); });
  refresh();
}

SystemState::~SystemState() {
  port_.setChangeHandler({});
}

void SystemState::refresh() {
  SystemFacts now = port_.facts();
  if (!std::isfinite(now.glassTint)) now.glassTint = 0;
  if (now != facts_.get()) facts_.set(now);
}

void SystemState::start() {
  if (timer_) return;
  timer_ = timers_.repeating(pollSeconds, pollTolerance, [this] { refresh(); });
  refresh();
}

void SystemState::stop() {
  timer_.reset();
}

}  // namespace veloria
