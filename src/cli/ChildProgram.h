#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/SignalInbox.h"

namespace veloria::cli {

/// How a program ended or stopped.
struct CommandEnd {
  enum class Kind { exited, killed, stopped };
  Kind kind = Kind::exited;
  int number = 0;  ///< the exit code, or the signal
  bool operator==(const CommandEnd&) const = default;

  bool succeeded() const { return kind == Kind::exited && number == 0; }
  /// Stopped by a key or by the terminal, as a shell's jobs are; not by SIGSTOP.
  bool stoppedByTerminal() const;
};

/// From the status of waitpid() with WUNTRACED.
CommandEnd commandEnd(int status);

/// The exit code for a program that exec() could not start, from its errno.
int exitCodeForExecError(int error);

/// A running program in this process's group, with its standard streams, folder and environment.
class ChildProgram {
 public:
  /// Starts `commandLine`, whose first entry is looked up on the PATH if it has no slash, with the signals as they were
  /// before `inbox`. Throws std::system_error with exec()'s error if that fails; then there is no child.
  ChildProgram(const std::vector<std::string>& commandLine, const SignalInbox& inbox);

  pid_t pid() const { return pid_; }

  /// Waits until it has ended. Passes signals on to it, and stops this process when the terminal stops the program.
  /// Calls `renew` every `interval` seconds and when this process continues after a stop.
  CommandEnd wait(SignalInbox& inbox, double interval, const std::function<void()>& renew) const;

 private:
  /// Its change of state since the last call, if any.
  std::optional<CommandEnd> news() const;

  pid_t pid_ = -1;
};

}  // namespace veloria::cli
