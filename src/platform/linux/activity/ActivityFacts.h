#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "ports/SystemActivity.h"

namespace veloria {

/// Combines what several sources report about the displays and the session: the displays sleep while any source says
/// so. Each setter returns the notification that the change causes, if any, so that no source wakes what another one
/// holds asleep. Everything starts awake and active.
class ActivityFacts {
 public:
  using Notification = ActivityNotification;

  /// The whole system is about to sleep, or has woken.
  std::optional<Notification> setSystemSleeping(bool sleeping);
  /// The displays have no power.
  std::optional<Notification> setDisplaysOff(bool off);
  /// A screen saver covers the screen.
  std::optional<Notification> setSaverActive(bool active);
  /// The session is in the background, or locked: a lock screen hides the desktop.
  std::optional<Notification> setSessionHidden(bool hidden);

  /// The notifications that bring a new watcher up to date.
  std::vector<Notification> initialNotifications() const;

 private:
  bool displaysDark() const { return displaysOff_ || saverActive_; }
  std::optional<Notification> setDisplayFact(bool& fact, bool value);

  bool systemSleeping_ = false;
  bool displaysOff_ = false;
  bool saverActive_ = false;
  bool sessionHidden_ = false;
};

/// The folder in which the kernel lists the power supplies.
inline constexpr const char* powerSupplyFolder = "/sys/class/power_supply";

/// True if a battery (or uninterruptible supply) of the computer itself is discharging and no external supply is
/// online. `folder` has the kernel's layout: a folder for each supply with the files `type`, `scope`, `online` and
/// `status`. Ignores unreadable or unknown contents, and reads at most 64 supplies. Some batteries take tens of
/// milliseconds to answer. Any thread.
bool runsOnBattery(const std::filesystem::path& folder);

}  // namespace veloria
