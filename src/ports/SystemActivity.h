#pragma once

#include <functional>

#include "ports/ActivityNotification.h"

namespace veloria {

/// Port: what happens to this computer and session. Main thread.
class SystemActivity {
 public:
  virtual ~SystemActivity() = default;
  SystemActivity(const SystemActivity&) = delete;
  SystemActivity& operator=(const SystemActivity&) = delete;

  /// `handler` gets every change from now on, and at once what is not as at the start of an ActivityWatcher, where the
  /// system tells that. It must not destroy this object. An empty one ends it.
  virtual void setHandler(std::function<void(ActivityNotification)> handler) = 0;

  /// What was last known; doesn't wait.
  virtual bool isOnBattery() = 0;

  /// What the display server says of the displays' power, for systems that don't tell it otherwise. Nothing but a
  /// change counts.
  virtual void setDisplaysOff(bool) {}

 protected:
  SystemActivity() = default;
};

}  // namespace veloria
