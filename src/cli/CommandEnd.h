#pragma once

namespace veloria::cli {

/// What a wait status says of a program.
struct CommandEnd {
  enum class Kind { exited, killed, stopped };
  Kind kind = Kind::exited;
  int number = 0;  ///< the exit code, or the signal
  bool operator==(const CommandEnd&) const = default;

  bool succeeded() const { return kind == Kind::exited && number == 0; }
  /// Stopped by a key or by the terminal, as a shell's jobs are; not by another program's SIGSTOP.
  bool stoppedByTerminal() const;
};

/// `status` as waitpid() gives it with WUNTRACED.
CommandEnd commandEnd(int status);

/// The exit code for a program that exec() could not start for this reason (errno).
int exitCodeForExecError(int error);

}  // namespace veloria::cli
