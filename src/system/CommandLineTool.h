#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Environment.h"
#include "ports/CommandLinePort.h"

namespace veloria {

/// How it stands with the `nimbra` command, for the settings window.
struct CommandLineToolState {
  std::optional<std::filesystem::path> resolvedPath;
  std::optional<std::filesystem::path> installDirectory;
  bool installedHere = false;
  /// resolvedPath is this program's own file, not a link to it (a package put it there): there is nothing to install.
  bool ownFileOnPath = false;
  std::string manualCommand;

  bool operator==(const CommandLineToolState&) const = default;
};

/// The command could be linked, but what the link leads to can't be run.
class InstallError : public std::runtime_error {
 public:
  explicit InstallError(const std::filesystem::path& link)
      : std::runtime_error("The link " + link.string() + " does not resolve to a runnable file.") {}
};

/// Puts the `nimbra` command onto the PATH of the user's shell by a symbolic link. Never asks for more rights than the
/// user has, and never touches anything at the link's place but a symbolic link. Nothing is kept between calls, so they
/// may come from any one thread at a time; all but manualCommand() may wait for the user's shell, for seconds.
class CommandLineTool {
 public:
  struct Places {
    std::filesystem::path command;  ///< this program's own nimbra: absolute, need not exist
    std::filesystem::path home;     ///< the user's home folder; empty when nobody knows it
    /// Where commands usually are, whatever the shell says.
    std::vector<std::filesystem::path> usual = {"/opt/homebrew/bin", "/usr/local/bin"};
  };

  /// Reads SHELL from the environment now. The port must outlive this object.
  CommandLineTool(CommandLinePort& port, const Environment& environment, Places places);

  /// The PATH of the user's login shell (SHELL, else /bin/zsh) as it says it, without empty parts: a profile that
  /// prints something may put anything in it. Empty when the shell doesn't answer.
  std::vector<std::filesystem::path> shellPathDirectories();
  /// Where a runnable nimbra is: in one of the usual folders, in the home's .local/bin or on the PATH, in this order.
  std::optional<std::filesystem::path> resolvedPath();
  /// Where install() would put the link: the first folder of the PATH that may be written to, else the home's
  /// .local/bin when it is on the PATH and only has to be made.
  std::optional<std::filesystem::path> installDirectory();
  /// Whether a nimbra in one of the folders of resolvedPath() is a symbolic link to this program's own.
  bool installedHere();
  /// What the user can paste into a shell to link it with an administrator's rights.
  std::string manualCommand() const;
  /// All of it, with one question to the shell.
  CommandLineToolState look();

  /// Links nimbra into installDirectory(), in place of a symbolic link that is there, and returns the link's path. When
  /// that is the place of this program's own file, there is nothing to do. Throws InstallError, in which case nothing
  /// was changed if it can be seen beforehand; std::system_error with "path: reason" when the link can't be made or
  /// something else is in its place; std::runtime_error when no folder is writable.
  std::filesystem::path install();
  /// Removes the link that installedHere() speaks of. Throws std::system_error with "path: reason" when that fails, and
  /// std::runtime_error when there is none.
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
