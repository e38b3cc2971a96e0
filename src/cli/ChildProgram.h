#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/CommandEnd.h"
#include "cli/SignalInbox.h"

namespace veloria::cli {

/// A program that was started in this process's group, with its standard streams, folder and environment.
class ChildProgram {
 public:
  /// Looks `commandLine`'s first entry up on the PATH, if it has no slash, and starts it with the signals as they were
  /// before `inbox`. Throws std::system_error with exec()'s error when it can't be started; then there is no child.
  ChildProgram(const std::vector<std::string>& commandLine, const SignalInbox& inbox);

  pid_t pid() const { return pid_; }

  /// Waits until it has ended, passing on the signals that come in, and stops when it is stopped by the terminal.
  /// Calls `renew` every `interval` seconds and when this process goes on after a stop.
  CommandEnd wait(SignalInbox& inbox, double interval, const std::function<void()>& renew) const;

 private:
  /// What has become of it since the last call, if anything.
  std::optional<CommandEnd> news() const;

  pid_t pid_ = -1;
};

}  // namespace veloria::cli
