#pragma once

#include <stdexcept>

namespace veloria {

/// Exit codes of both programs.
enum ExitCode {
  done = 0,
  failed = 1,
  wrongUsage = 2,
  cannotRun = 3,        ///< the band: this computer lacks something, and a window says so; do not restart
  notExecutable = 126,  ///< nimbra run: the program exists but can't be started
  notFound = 127,       ///< nimbra run: there is no such program
  killedBySignal = 128  ///< nimbra run: plus the signal's number
};

/// An error in the command line. The text is one line that names the error and the right usage.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace veloria
