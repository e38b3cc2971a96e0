#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "base/Environment.h"
#include "platform/linux/activity/PowerSupplies.h"
#include "ports/SystemActivity.h"

namespace veloria {

/// Tells the activity watcher what happens to this computer and session:
///
/// - sleep: the login manager's PrepareForSleep;
/// - session: in front and not locked, as the login manager says (a lock screen hides the desktop); a process that
///   belongs to no session counts as in front;
/// - displays: off as setDisplaysOff() is told, or under an active screen saver, which hides them just as well;
/// - power: UPower's OnBattery, else the kernel's list of supplies.
///
/// Services may be absent, come late, end, restart, answer nonsense or not at all: what is not known counts as awake,
/// in front and on mains. None is started by being asked, and nothing ever delays or prevents sleep.
///
/// Main thread, with a QCoreApplication that outlives it. Everything is asked on a thread of its own, so nothing waits
/// but the destructor, should a bus have accepted a connection and not answered (half a minute at most).
class LinuxActivity final : public SystemActivity {
 public:
  using Notification = ActivityNotification;

  struct Options {
    /// Read while constructing: DBUS_SYSTEM_BUS_ADDRESS, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR, XDG_SESSION_ID.
    Environment environment;
    std::filesystem::path powerSupplies = powerSupplyFolder;
    /// After which a bus that is not there or has ended is tried again.
    double retrySeconds = 60;
  };

  explicit LinuxActivity(const Options& options);
  ~LinuxActivity() override;

  /// `handler` gets every change from now on, and at once what is already not as at the start of a watcher. It must not
  /// destroy this object.
  void setHandler(std::function<void(Notification)> handler) override;

  /// What the display server says of the displays' power; nothing but a change counts.
  void setDisplaysOff(bool off) override;

  /// What was last known; doesn't wait. Without UPower the supplies are looked at again because of this call, so it
  /// follows them when it is asked regularly.
  bool isOnBattery() override;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
