#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The application as the system sees it. Whoever makes the application object also runs the event loop, which serves
/// the system's queues and timers. Main thread if nothing else is said.
namespace veloria {

/// Removes the Dock icon and the application's menu. Call it once the application object is made.
void becomeAccessory();

/// Shows a critical alert and waits until it is answered.
void showCriticalAlert(const std::string& message, const std::string& informative);

/// Writes a line to the system's log, which the Console shows. Any thread.
void writeToSystemLog(std::string_view line);

/// The path of this process's application bundle; the executable's folder outside of one. Any thread.
std::filesystem::path mainBundle();

}  // namespace veloria
