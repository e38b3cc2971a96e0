#pragma once

#include <filesystem>

#include "base/Environment.h"
#include "ports/LoginItemPort.h"

namespace veloria {

/// Starts this program with the desktop by an entry `veloria.desktop` in the user's autostart folder. An entry that is
/// there counts as the desktop would take it: one that hides itself, as desktops' own tools write it, is off.
class AutostartLoginItem final : public LoginItemPort {
 public:
  /// `program` is what the entry starts, an absolute path. The folder is $XDG_CONFIG_HOME/autostart (see
  /// UserFolders.h), looked up now; without a home every change fails.
  AutostartLoginItem(const Environment& environment, std::filesystem::path program);

  bool isRegistered() override;
  /// Writes the entry, whole or not at all, in place of one that is there.
  Result<Done> add() override;
  /// Removes the entry, unless it is off already.
  Result<Done> remove() override;

 private:
  std::filesystem::path program_;
  std::filesystem::path file_;
};

}  // namespace veloria
