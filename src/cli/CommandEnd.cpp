#include "cli/CommandEnd.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>

#include "base/ExitCode.h"

namespace veloria::cli {

bool CommandEnd::stoppedByTerminal() const {
  return kind == Kind::stopped && (number == SIGTSTP || number == SIGTTIN || number == SIGTTOU);
}

CommandEnd commandEnd(int status) {
  if (WIFSTOPPED(status)) return {CommandEnd::Kind::stopped, WSTOPSIG(status)};
  if (WIFSIGNALED(status)) return {CommandEnd::Kind::killed, WTERMSIG(status)};
  return {CommandEnd::Kind::exited, WEXITSTATUS(status)};
}

int exitCodeForExecError(int error) {
  return error == ENOENT ? notFound : notExecutable;
}

}  // namespace veloria::cli
