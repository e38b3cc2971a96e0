#pragma once

#include <optional>
#include <vector>

#include "ports/ActivityNotification.h"

namespace veloria {

/// What several witnesses say about the displays and the session, put together: the displays sleep while any of them
/// says so. Each change tells what to notify the watcher of, if anything, so that no witness wakes what another one
/// holds asleep. At the start everything is awake and active.
class ActivityFacts {
 public:
  using Notification = ActivityNotification;

  /// The whole system is about to sleep, or has woken.
  std::optional<Notification> setSystemSleeping(bool sleeping);
  /// The displays are without power.
  std::optional<Notification> setDisplaysOff(bool off);
  /// A screen saver is over everything.
  std::optional<Notification> setSaverActive(bool active);
  /// The session is in the background, or locked: a lock screen hides the desktop.
  std::optional<Notification> setSessionHidden(bool hidden);

  /// What tells a watcher that knows nothing yet where things stand.
  std::vector<Notification> departures() const;

 private:
  bool displaysDark() const { return displaysOff_ || saverActive_; }
  std::optional<Notification> setDisplayFact(bool& fact, bool value);

  bool systemSleeping_ = false;
  bool displaysOff_ = false;
  bool saverActive_ = false;
  bool sessionHidden_ = false;
};

}  // namespace veloria
