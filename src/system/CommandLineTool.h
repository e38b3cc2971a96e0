#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Environment.h"
#include "ports/SystemPort.h"

namespace veloria {

/// The state of the `nimbra` command, for the settings window.
struct CommandLineToolState {
  std::optional<std::filesystem::path> resolvedPath;
  std::optional<std::filesystem::path> installDirectory;
  bool installedHere = false;
  /// resolvedPath is this program's own file, not a link to it (a package put it there): there is nothing to install.
  bool ownFileOnPath = false;
  std::string manualCommand;

  bool operator==(const CommandLineToolState&) const = default;
};

/// The link could be made, but its target can't be run.
class InstallError : public std::runtime_error {
 public:
  explicit InstallError(const std::filesystem::path& link)
      : std::runtime_error("The link " + link.string() + " does not resolve to a runnable file.") {}
};

/// Installs the `nimbra` command on the PATH of the user's shell as a symbolic link. Needs no extra rights, and
/// replaces nothing but a symbolic link. Keeps no state between calls: any one thread at a time. All functions but
/// manualCommand() may wait seconds for the user's shell.
class CommandLineTool {
 public:
  struct Places {
    std::filesystem::path command;  ///< this program's own nimbra: absolute, need not exist
    std::filesystem::path home;     ///< the user's home folder; empty if unknown
    /// Searched whatever the shell's PATH is.
    std::vector<std::filesystem::path> usual = {"/opt/homebrew/bin", "/usr/local/bin"};
  };

  /// Reads SHELL from the environment now. The port must outlive this object.
  CommandLineTool(CommandLinePort& port, const Environment& environment, Places places);

  /// The PATH that the user's login shell (SHELL, else /bin/zsh) prints, without empty parts. It may contain anything
  /// that a profile prints. Empty if the shell doesn't answer.
  std::vector<std::filesystem::path> shellPathDirectories();
  /// Where a runnable nimbra is: in one of the usual folders, in the home's .local/bin or on the PATH, in this order.
  std::optional<std::filesystem::path> resolvedPath();
  /// Where install() would put the link: the first writable folder on the PATH, else the home's .local/bin if that is
  /// on the PATH and only has to be made.
  std::optional<std::filesystem::path> installDirectory();
  /// Whether a nimbra in one of the folders of resolvedPath() is a symbolic link to this program's own.
  bool installedHere();
  /// A command to paste into a shell, which makes the link with an administrator's rights.
  std::string manualCommand() const;
  /// All of the above, with one call of the shell.
  CommandLineToolState look();

  /// Links nimbra into installDirectory(), replacing a symbolic link there, and returns the link's path. Does nothing
  /// if this program's own file is there. Throws InstallError if the target can't be run (if that is known beforehand,
  /// nothing is changed); std::system_error with "path: reason" if the link can't be made or something else is in its
  /// place; std::runtime_error if no folder is writable.
  std::filesystem::path install();
  /// Removes the link that installedHere() finds. Throws std::system_error with "path: reason" if that fails, and
  /// std::runtime_error if there is none.
  void uninstall();

 private:
  using Folders = std::vector<std::filesystem::path>;
  Folders candidates(const Folders& shellPath) const;
  std::optional<std::filesystem::path> resolvedIn(const Folders& shellPath);
  std::optional<std::filesystem::path> directoryIn(const Folders& shellPath);
  std::optional<std::filesystem::path> linkIn(const Folders& shellPath) const;
  bool isOwnFile(const std::filesystem::path& path) const;
  bool leadsHere(const std::filesystem::path& link) const;
  void makeLink(const std::filesystem::path& link) const;

  CommandLinePort& port_;
  std::string shell_;
  Places places_;
};

}  // namespace veloria
