#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gpu/Device.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria {

/// The hardware GPU that is taken if nobody names a device: the best one of a kind that is no program. None: the CPU's
/// own renderer is several times as fast as a driver that runs on the CPU.
std::optional<std::uint32_t> chooseHardware(const std::vector<gpu::vulkan::DeviceInfo>& devices);

/// True if `devices` (/dev) has a file by which a driver reaches a GPU. Looking costs nothing, but asking Vulkan loads
/// every driver that is installed, tens of megabytes, into the program for good.
bool hasGpuFile(const std::filesystem::path& devices);

/// The device that NIMBRA_GPU names, else the best GPU. Throws gpu::NoDeviceError when there is none, gpu::DeviceError
/// when its driver fails.
std::unique_ptr<gpu::Device> makeNamedDeviceOrGpu();

/// A device that draws on the CPU. Throws gpu::NoDeviceError if NIMBRA_GPU names one.
std::unique_ptr<gpu::Device> makeSubstitute();

}  // namespace veloria
