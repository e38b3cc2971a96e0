#pragma once

#include <functional>

namespace veloria {

/// Events from the system: at any time, any number of times and in any order.
enum class ActivityNotification {
  screensDidSleep,
  screensDidWake,
  willSleep,
  didWake,
  sessionDidResignActive,
  sessionDidBecomeActive,
};

/// Port: power and session events of this computer. Main thread.
class SystemActivity {
 public:
  virtual ~SystemActivity() = default;
  SystemActivity(const SystemActivity&) = delete;
  SystemActivity& operator=(const SystemActivity&) = delete;

  /// `handler` gets every change from now on, and at once each state that differs from the initial one of an
  /// ActivityWatcher, if the system reports it. It must not destroy this object. An empty handler ends the calls.
  virtual void setHandler(std::function<void(ActivityNotification)> handler) = 0;

  /// The last known state; doesn't wait.
  virtual bool isOnBattery() = 0;

  /// The power state of the displays from the display server, for systems with no other source. Only changes count.
  virtual void setDisplaysOff(bool) {}

 protected:
  SystemActivity() = default;
};

}  // namespace veloria
