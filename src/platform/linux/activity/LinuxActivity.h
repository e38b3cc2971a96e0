#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "base/Environment.h"
#include "platform/linux/activity/ActivityFacts.h"
#include "ports/SystemActivity.h"

namespace veloria {

/// Reports changes of this computer and session to the activity watcher:
///
/// - sleep: the login manager's PrepareForSleep;
/// - session: active and not locked according to the login manager (a lock screen hides the desktop); a process that
///   belongs to no session counts as active;
/// - displays: off according to setDisplaysOff(), or covered by a screen saver;
/// - power: UPower's OnBattery, else the kernel's list of supplies.
///
/// Services may be absent, start late, end, restart, send nonsense or not answer. Unknown counts as awake, active and
/// on mains. A query starts no service, and nothing delays or prevents sleep.
///
/// Main thread, with a QCoreApplication that outlives it. All queries run on a thread of their own. Only the destructor
/// can wait, half a minute at most, if a bus has accepted a connection and not answered.
class LinuxActivity final : public SystemActivity {
 public:
  using Notification = ActivityNotification;

  struct Options {
    /// Read while constructing: DBUS_SYSTEM_BUS_ADDRESS, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR, XDG_SESSION_ID.
    Environment environment;
    std::filesystem::path powerSupplies = powerSupplyFolder;
    /// Delay before a missing or ended bus is tried again.
    double retrySeconds = 60;
  };

  explicit LinuxActivity(const Options& options);
  ~LinuxActivity() override;

  /// `handler` gets every change from now on, and at once those that bring a new watcher up to date. It must not
  /// destroy this object.
  void setHandler(std::function<void(Notification)> handler) override;

  /// The power state of the displays according to the display server. No effect if unchanged.
  void setDisplaysOff(bool off) override;

  /// The last known state; doesn't wait. Without UPower, each call also starts a new read of the supplies for the calls
  /// after it.
  bool isOnBattery() override;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
