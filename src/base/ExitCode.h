#pragma once

#include <stdexcept>

namespace veloria {

/// Exit codes of both programs.
enum ExitCode {
  done = 0,
  failed = 1,
  wrongUsage = 2,
  cannotRun = 3,        ///< the band: this computer lacks what it needs, and the person was told; don't start it again
  notExecutable = 126,  ///< nimbra run: the program is there, but can't be started
  notFound = 127,       ///< nimbra run: there is no such program
  killedBySignal = 128  ///< nimbra run: plus the signal's number
};

/// The command line is wrong. The text says what, and what would be right; it is one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace veloria
