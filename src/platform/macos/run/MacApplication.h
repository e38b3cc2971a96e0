#pragma once

#include <string>
#include <string_view>

/// What the application is to the system. The event loop is not here: whoever makes the application object runs it, and
/// the system's queues and timers are served by it. Main thread.
namespace veloria {

/// No icon in the Dock and no menu of its own. To be called once the application object is made, which would have both
/// otherwise.
void becomeAccessory();

/// Shows a critical alert and waits until it is answered.
void showCriticalAlert(const std::string& message, const std::string& informative);

/// Writes a line to the system's log, where the Console shows it. Any thread.
void writeToSystemLog(std::string_view line);

}  // namespace veloria
