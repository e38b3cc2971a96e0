#pragma once

#include <string>

#include "ports/Notifier.h"

namespace veloria {

/// Writes a critical message to the system log and shows it until it is read. Where the widget library has no display
/// to show it on, the desktop is asked to show it as a notification, which is waited for for some seconds. Main thread,
/// with a QApplication.
void showCriticalAlert(Notifier& notifier, const std::string& message, const std::string& informative);

}  // namespace veloria
