#include "base/MediaClock.h"

#include <chrono>
#include <ctime>

namespace veloria {

namespace {

double seconds(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

double mediaTime() {
#ifdef CLOCK_UPTIME_RAW
  return seconds(CLOCK_UPTIME_RAW);  // CLOCK_MONOTONIC goes on during sleep there
#else
  return seconds(CLOCK_MONOTONIC);
#endif
}

double continuousTime() {
#ifdef CLOCK_BOOTTIME
  return seconds(CLOCK_BOOTTIME);
#else
  return seconds(CLOCK_MONOTONIC);  // goes on during sleep on such systems
#endif
}

double wallTime() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace veloria
