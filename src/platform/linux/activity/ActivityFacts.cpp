#include "platform/linux/activity/ActivityFacts.h"

#include <utility>

namespace veloria {

using Notification = ActivityNotification;

std::optional<Notification> ActivityFacts::setSystemSleeping(bool sleeping) {
  if (std::exchange(systemSleeping_, sleeping) == sleeping) return std::nullopt;
  if (sleeping) return Notification::willSleep;
  // Displays that are still dark tell of their waking themselves.
  return displaysDark() ? std::nullopt : std::optional(Notification::didWake);
}

std::optional<Notification> ActivityFacts::setDisplaysOff(bool off) {
  return setDisplayFact(displaysOff_, off);
}

std::optional<Notification> ActivityFacts::setSaverActive(bool active) {
  return setDisplayFact(saverActive_, active);
}

std::optional<Notification> ActivityFacts::setDisplayFact(bool& fact, bool value) {
  const bool before = systemSleeping_ || displaysDark();
  fact = value;
  const bool after = systemSleeping_ || displaysDark();
  if (before == after) return std::nullopt;
  return after ? Notification::screensDidSleep : Notification::screensDidWake;
}

std::optional<Notification> ActivityFacts::setSessionHidden(bool hidden) {
  if (std::exchange(sessionHidden_, hidden) == hidden) return std::nullopt;
  return hidden ? Notification::sessionDidResignActive : Notification::sessionDidBecomeActive;
}

std::vector<Notification> ActivityFacts::departures() const {
  std::vector<Notification> result;
  if (systemSleeping_) result.push_back(Notification::willSleep);
  if (displaysDark()) result.push_back(Notification::screensDidSleep);
  if (sessionHidden_) result.push_back(Notification::sessionDidResignActive);
  return result;
}

}  // namespace veloria
