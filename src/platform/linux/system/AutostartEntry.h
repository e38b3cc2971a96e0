#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Result.h"

namespace veloria {

/// A desktop entry that starts `program`, which is absolute, without arguments, quoted and escaped as the Desktop Entry
/// format 1.5 says under "The Exec key" and "Value types". Entries are UTF-8, so the error says that a path which isn't
/// can't be written. Any thread.
Result<std::string> autostartEntry(const std::filesystem::path& program);

/// Whether a desktop entry in the autostart folder, any bytes, is started at login: it has a command and neither Hidden
/// nor the desktop's own switch (X-GNOME-Autostart-enabled) turns it off. Any thread.
bool startsAtLogin(std::string_view entry);

}  // namespace veloria
