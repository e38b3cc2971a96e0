#pragma once

#include <sys/types.h>

namespace veloria::cli {

/// A signal that came in.
struct ReceivedSignal {
  int number = 0;
  bool sentByProcess = false;  ///< with kill() or the like, not by the kernel, as a terminal's keys are
  pid_t sender = 0;            ///< where a process sent it
};

/// Whether a signal must be passed on to the program `child`. What a terminal sends goes to the whole process group,
/// and what the program itself sent to the group it has had already.
bool isForwarded(const ReceivedSignal& signal, pid_t child);

}  // namespace veloria::cli
