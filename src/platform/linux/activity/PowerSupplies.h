#pragma once

#include <filesystem>

namespace veloria {

/// Where the kernel lists the power supplies.
inline constexpr const char* powerSupplyFolder = "/sys/class/power_supply";

/// True when a battery (or uninterruptible supply) of the computer itself is discharging and no supply from outside is
/// online. `folder` is laid out as the kernel does it: a folder for each supply with the files `type`, `scope`,
/// `online` and `status`. What can't be read or understood says nothing; at most 64 supplies are looked at. Some
/// batteries take tens of milliseconds to answer. Any thread.
bool runsOnBattery(const std::filesystem::path& folder);

}  // namespace veloria
