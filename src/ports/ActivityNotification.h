#pragma once

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

}  // namespace veloria
