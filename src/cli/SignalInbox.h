#pragma once

#include <array>
#include <csignal>
#include <optional>

#include "cli/ReceivedSignal.h"

namespace veloria::cli {

/// While it lives, the signals that matter to somebody who waits for a child are queued instead of acted upon: the end
/// of a child, and what asks a program to end, stop or go on. Only in a program with one thread; one at a time.
class SignalInbox {
 public:
  SignalInbox();
  ~SignalInbox();
  SignalInbox(const SignalInbox&) = delete;
  SignalInbox& operator=(const SignalInbox&) = delete;

  /// The next signal, waited for until `seconds` have passed; nothing then, or a little earlier.
  std::optional<ReceivedSignal> next(double seconds);

  /// Stops this process as `number` (a stop signal) would have; returns when it goes on.
  void stop(int number);

  /// Ends this process by `number`, as one that does not handle it ends, without a core file. Returns when the system
  /// does not let it.
  void die(int number);

  /// In a forked child: the signals are as they were before.
  void restore() const noexcept;

 private:
  void actByDefault(int number);

  // SIGPIPE is among them so that a warning nobody reads does not end us before the child.
  static constexpr std::array queued{SIGCHLD, SIGINT,  SIGQUIT, SIGTERM, SIGHUP,
                                     SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT, SIGPIPE};

  sigset_t formerMask_{};
  std::array<struct sigaction, queued.size()> formerActions_{};
};

}  // namespace veloria::cli
