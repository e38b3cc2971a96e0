#include "cli/SignalInbox.h"

#include <sys/resource.h>
#include <sys/select.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <span>

namespace veloria::cli {

namespace {

// The last signal, in globals because of the handler. There is only one at a time: the handler blocks the others, and
// they are unblocked only during a wait.
volatile sig_atomic_t receivedNumber = 0;
volatile sig_atomic_t receivedFromProcess = 0;
volatile pid_t receivedFrom = 0;

bool sentByProcess(const siginfo_t& info) {
#ifdef SI_TKILL
  if (info.si_code == SI_TKILL) return true;
#endif
  return info.si_code == SI_USER || info.si_code == SI_QUEUE;
}

extern "C" void noteReceived(int number, siginfo_t* info, void*) {
  receivedNumber = number;
  receivedFromProcess = sentByProcess(*info) ? 1 : 0;
  receivedFrom = info->si_pid;
}

sigset_t setOf(std::span<const int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

timespec duration(double seconds) {
  constexpr double most = 3600;
  const double bounded = std::clamp(seconds, 0.0, most);
  const double whole = std::floor(bounded);
  return {static_cast<time_t>(whole), static_cast<long>((bounded - whole) * 1e9)};
}

}  // namespace

bool isForwarded(const ReceivedSignal& signal, pid_t child) {
  constexpr std::array passedOn{SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT};
  return signal.sentByProcess && signal.sender != child && std::ranges::find(passedOn, signal.number) != passedOn.end();
}

SignalInbox::SignalInbox() {
  const sigset_t set = setOf(queued);
  sigprocmask(SIG_BLOCK, &set, &formerMask_);
  struct sigaction note {};
  note.sa_sigaction = noteReceived;
  note.sa_flags = SA_SIGINFO;
  note.sa_mask = set;
  for (std::size_t i = 0; i < queued.size(); ++i) sigaction(queued[i], &note, &formerActions_[i]);
}

SignalInbox::~SignalInbox() {
  restore();
}

void SignalInbox::restore() const noexcept {
  for (std::size_t i = 0; i < queued.size(); ++i) sigaction(queued[i], &formerActions_[i], nullptr);
  sigprocmask(SIG_SETMASK, &formerMask_, nullptr);
}

std::optional<ReceivedSignal> SignalInbox::next(double seconds) {
  const timespec wait = duration(seconds);
  sigset_t others = formerMask_;
  for (const int signal : queued) sigdelset(&others, signal);
  receivedNumber = 0;
  pselect(0, nullptr, nullptr, nullptr, &wait, &others);
  if (receivedNumber == 0) return std::nullopt;
  const bool sent = receivedFromProcess != 0;
  return ReceivedSignal{receivedNumber, sent, sent ? receivedFrom : 0};
}

// Raised while it is blocked, so that a queued one does not stop us a second time.
void SignalInbox::actByDefault(int number) {
  struct sigaction plain {};
  plain.sa_handler = SIG_DFL;
  struct sigaction former {};
  sigaction(number, &plain, &former);
  raise(number);
  const sigset_t one = setOf({&number, 1});
  sigset_t mask{};
  sigprocmask(SIG_UNBLOCK, &one, &mask);
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
