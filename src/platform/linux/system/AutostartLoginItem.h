#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Result.h"
#include "ports/SystemPort.h"

namespace veloria {

/// Starts this program at login by an entry `veloria.desktop` in the user's autostart folder. Reads an existing entry
/// as desktops do: a hidden one, which is how their own tools switch it off, is off.
class AutostartLoginItem final : public LoginItemPort {
 public:
  /// The entry starts `program`, an absolute path. The folder is $XDG_CONFIG_HOME/autostart (see UserFolders.h), read
  /// from the environment here; without a home every change fails.
  AutostartLoginItem(const Environment& environment, std::filesystem::path program);

  bool isRegistered() override;
  /// Writes the entry atomically, replacing an existing one.
  Result<Done> add() override;
  /// Removes the entry if it is on.
  Result<Done> remove() override;

 private:
  std::filesystem::path program_;
  std::filesystem::path file_;
};

/// A desktop entry that starts `program`, an absolute path, without arguments; quoted and escaped by the sections "The
/// Exec key" and "Value types" of the Desktop Entry format 1.5. Entries are UTF-8, so other paths are an error. Any
/// thread.
Result<std::string> autostartEntry(const std::filesystem::path& program);

/// True if desktops start an autostart entry (any bytes) at login: it has a command, and neither Hidden nor
/// X-GNOME-Autostart-enabled turns it off. Any thread.
bool startsAtLogin(std::string_view entry);

}  // namespace veloria
