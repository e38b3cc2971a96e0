#include "cli/SignalInbox.h"

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <initializer_list>

namespace veloria::cli {

namespace {

sigset_t setOf(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

/// SIGPIPE is among them so that a warning nobody reads does not end us before the child.
sigset_t queuedSignals() {
  return setOf({SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT, SIGPIPE});
}

timespec duration(double seconds) {
  constexpr double most = 3600;
  const double bounded = std::clamp(seconds, 0.0, most);
  const double whole = std::floor(bounded);
  return {static_cast<time_t>(whole), static_cast<long>((bounded - whole) * 1e9)};
}

}  // namespace

SignalInbox::SignalInbox() {
  const sigset_t queued = queuedSignals();
  sigprocmask(SIG_BLOCK, &queued, &formerMask_);
  // Where it is ignored, nobody learns how a child ended.
  struct sigaction plain {};
  plain.sa_handler = SIG_DFL;
  sigaction(SIGCHLD, &plain, &formerChildAction_);
}

SignalInbox::~SignalInbox() {
  restore();
}

void SignalInbox::restore() const noexcept {
  sigaction(SIGCHLD, &formerChildAction_, nullptr);
  sigprocmask(SIG_SETMASK, &formerMask_, nullptr);
}

std::optional<ReceivedSignal> SignalInbox::next(double seconds) {
  const sigset_t queued = queuedSignals();
  const timespec wait = duration(seconds);
  siginfo_t info{};
  const int number = sigtimedwait(&queued, &info, &wait);
  if (number < 0) return std::nullopt;
  const bool sent = info.si_code == SI_USER || info.si_code == SI_QUEUE || info.si_code == SI_TKILL;
  return ReceivedSignal{number, sent, sent ? info.si_pid : 0};
}

// Raised before it is let through, so that one that is queued already does not stop us a second time.
void SignalInbox::actByDefault(int number) {
  struct sigaction plain {};
  plain.sa_handler = SIG_DFL;
  struct sigaction former {};
  sigaction(number, &plain, &former);
  raise(number);
  const sigset_t let = setOf({number});
  sigset_t mask{};
  sigprocmask(SIG_UNBLOCK, &let, &mask);
  sigprocmask(SIG_SETMASK, &mask, nullptr);
  sigaction(number, &former, nullptr);
}

void SignalInbox::stop(int number) {
  actByDefault(number);
}

void SignalInbox::die(int number) {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  actByDefault(number);
}

}  // namespace veloria::cli
