#include "platform/macos/activity/PowerSources.h"

#include <algorithm>

namespace veloria {

bool isBatteryPower(std::span<const std::string> states) {
  return std::ranges::find(states, batteryPowerState) != states.end();
}

}  // namespace veloria
