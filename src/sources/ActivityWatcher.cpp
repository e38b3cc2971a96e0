#include "sources/ActivityWatcher.h"

#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

const char* word(bool value) {
  return value ? "true" : "false";
}

bool ask(const std::function<bool()>& probe) {
  return probe && probe();
}

}  // namespace

ActivityWatcher::ActivityWatcher(Ports ports) : ports_(std::move(ports)) {
  timer_ = ports_.timers->repeating(pollSeconds, pollTolerance, [this] { poll(); });
  poll();
}

void ActivityWatcher::notify(Notification notification) {
  apply(notification);
  if (notification == Notification::didWake) probe();
  recompute();
}

void ActivityWatcher::apply(Notification notification) {
  switch (notification) {
    case Notification::screensDidSleep:
    case Notification::willSleep:
      displayAsleep_ = true;
      break;
    case Notification::screensDidWake:
    case Notification::didWake:
      displayAsleep_ = false;
      break;
    case Notification::sessionDidResignActive:
      sessionActive_ = false;
      break;
    case Notification::sessionDidBecomeActive:
      sessionActive_ = true;
      break;
  }
}

void ActivityWatcher::poll() {
  if (probe()) recompute();
}

bool ActivityWatcher::probe() {
  if (ports_.onPoll) ports_.onPoll();
  const NimbraConfig& settings = ports_.settings();
  const bool full = settings.pauseInFullScreen && ask(ports_.isFullScreenSpaceActive);
  const bool battery = settings.pauseOnBattery && ask(ports_.isOnBattery);
  if (full == fullScreenCovering_ && battery == onBattery_) return false;
  fullScreenCovering_ = full;
  onBattery_ = battery;
  return true;
}

void ActivityWatcher::recompute() {
  const bool enabled = ports_.settings().enabled;
  reason_ = !enabled              ? "it is paused; 'nimbra resume' goes on"
            : displayAsleep_      ? "the displays are asleep"
            : !sessionActive_     ? "this session is not active"
            : fullScreenCovering_ ? "a full-screen window is in front"
            : onBattery_          ? "the computer runs on battery"
                                  : "";
  const bool render = reason_.empty();
  NimbraLog::debugf("activity enabled=%s asleep=%s session=%s fullscreen=%s battery=%s -> %s", word(enabled),
                    word(displayAsleep_), word(sessionActive_), word(fullScreenCovering_), word(onBattery_),
                    word(render));
  if (render == shouldRender_) return;
  shouldRender_ = render;
  if (onChange) onChange();
}

}  // namespace veloria
