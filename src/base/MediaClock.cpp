#include "base/MediaClock.h"

#include <chrono>
#include <ctime>

namespace veloria {

double mediaTime() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double continuousTime() {
#ifdef CLOCK_BOOTTIME
  constexpr clockid_t clock = CLOCK_BOOTTIME;
#else
  constexpr clockid_t clock = CLOCK_MONOTONIC;  // goes on during sleep where there is no other
#endif
  timespec time{};
  ::clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double wallTime() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace veloria
