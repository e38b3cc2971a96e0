#pragma once

#include <sys/types.h>

#include <array>
#include <csignal>
#include <optional>

namespace veloria::cli {

/// A signal that was received.
struct ReceivedSignal {
  int number = 0;
  bool sentByProcess = false;  ///< by kill() or the like; not by the kernel, which sends a terminal's keys
  pid_t sender = 0;            ///< the process, if one sent it
};

/// Whether a signal must be passed on to the program `child`. The program has already received what a terminal sends,
/// which goes to the whole process group, and what it sent to the group itself.
bool isForwarded(const ReceivedSignal& signal, pid_t child);

/// While it exists, these signals are queued instead of taking effect: the end of a child, and requests to end, stop or
/// continue. Only for a program with one thread; one object at a time.
class SignalInbox {
 public:
  SignalInbox();
  ~SignalInbox();
  SignalInbox(const SignalInbox&) = delete;
  SignalInbox& operator=(const SignalInbox&) = delete;

  /// Waits for the next signal, up to `seconds`; may return nothing a little earlier.
  std::optional<ReceivedSignal> next(double seconds);

  /// Stops this process by `number`, a stop signal; returns when it continues.
  void stop(int number);

  /// Ends this process by `number`, as if it did not handle the signal, without a core file. Returns only if the system
  /// prevents that.
  void die(int number);

  /// For a forked child: restores the signals as they were before.
  void restore() const noexcept;

 private:
  void actByDefault(int number);

  // SIGPIPE is included so that writing a warning to a closed pipe does not end nimbra before the child.
  static constexpr std::array queued{SIGCHLD, SIGINT,  SIGQUIT, SIGTERM, SIGHUP,
                                     SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT, SIGPIPE};

  sigset_t formerMask_{};
  std::array<struct sigaction, queued.size()> formerActions_{};
};

}  // namespace veloria::cli
