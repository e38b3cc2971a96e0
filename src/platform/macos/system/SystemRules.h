#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "ports/SystemPort.h"

/// The system's names for what the program asks or hears of it.

/// The workspace's notifications about sleep and the session, with the ActivityNotification that each stands for.
/// `USE(name, notification)` is called for each; the names are the system's constants.
#define VELORIA_WORKSPACE_NOTIFICATIONS(USE)                                 \
  USE(NSWorkspaceScreensDidSleepNotification, screensDidSleep)               \
  USE(NSWorkspaceScreensDidWakeNotification, screensDidWake)                 \
  USE(NSWorkspaceWillSleepNotification, willSleep)                           \
  USE(NSWorkspaceDidWakeNotification, didWake)                               \
  USE(NSWorkspaceSessionDidResignActiveNotification, sessionDidResignActive) \
  USE(NSWorkspaceSessionDidBecomeActiveNotification, sessionDidBecomeActive)

namespace veloria {

/// The key of the state in a power source's description, and its value on battery power.
inline constexpr std::string_view powerSourceStateKey = "Power Source State";
inline constexpr std::string_view batteryPowerState = "Battery Power";

/// `states`: one per power source; empty if a source has none. A computer without a battery may have no source.
bool isBatteryPower(std::span<const std::string> states);

/// The address that opens a pane of System Settings.
std::string paneAddress(SystemPane pane);

/// The nimbra command that ships with the application `bundle`.
std::filesystem::path bundledCommand(const std::filesystem::path& bundle);

}  // namespace veloria
