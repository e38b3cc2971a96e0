#include "cli/ReceivedSignal.h"

#include <algorithm>
#include <array>
#include <csignal>

namespace veloria::cli {

bool isForwarded(const ReceivedSignal& signal, pid_t child) {
  constexpr std::array passedOn{SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT};
  return signal.sentByProcess && signal.sender != child && std::ranges::find(passedOn, signal.number) != passedOn.end();
}

}  // namespace veloria::cli
