#include "base/MediaClock.h"

#include <chrono>

namespace veloria {

double mediaTime() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace veloria
