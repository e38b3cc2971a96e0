#pragma once

/// What the workspace tells of sleep and of the session: the name of each of its notifications, and what it is to the
/// activity watcher. The names are the system's constants; `USE(name, notification)` is called for each.
#define VELORIA_WORKSPACE_NOTIFICATIONS(USE)                                 \
  USE(NSWorkspaceScreensDidSleepNotification, screensDidSleep)               \
  USE(NSWorkspaceScreensDidWakeNotification, screensDidWake)                 \
  USE(NSWorkspaceWillSleepNotification, willSleep)                           \
  USE(NSWorkspaceDidWakeNotification, didWake)                               \
  USE(NSWorkspaceSessionDidResignActiveNotification, sessionDidResignActive) \
  USE(NSWorkspaceSessionDidBecomeActiveNotification, sessionDidBecomeActive)
