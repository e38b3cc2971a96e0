#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gpu/vulkan/VulkanFactory.h"

namespace veloria {

/// The hardware GPU that is taken if nobody names a device: the best one of a kind that is no program. None: the CPU's
/// own renderer is several times as fast as a driver that runs on the CPU.
std::optional<std::uint32_t> chooseHardware(const std::vector<gpu::vulkan::DeviceInfo>& devices);

}  // namespace veloria
