#pragma once

#include <span>
#include <string>
#include <string_view>

namespace veloria {

/// What a power source's description says of itself under `powerSourceStateKey` while the computer lives on it.
inline constexpr std::string_view powerSourceStateKey = "Power Source State";
inline constexpr std::string_view batteryPowerState = "Battery Power";

/// `states`: of each power source; empty where a source tells none. Computers without a battery may have no source.
bool isBatteryPower(std::span<const std::string> states);

}  // namespace veloria
