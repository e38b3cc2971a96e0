#pragma once

namespace veloria::cli {

/// Exit codes of every command but `run`, which passes on its program's.
enum ExitCode {
  done = 0,
  failed = 1,
  wrongUsage = 2,
  notExecutable = 126,  ///< run: the program is there, but can't be started
  notFound = 127,       ///< run: there is no such program
  killedBySignal = 128  ///< run: plus the signal's number
};

}  // namespace veloria::cli
