#pragma once

namespace veloria {

/// What the system tells; each may come at any time, any number of times and in any order.
enum class ActivityNotification {
  screensDidSleep,
  screensDidWake,
  willSleep,
  didWake,
  sessionDidResignActive,
  sessionDidBecomeActive,
};

}  // namespace veloria
