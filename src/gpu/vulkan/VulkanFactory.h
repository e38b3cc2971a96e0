#pragma once

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gpu/Device.h"
#include "gpu/PictureBuffers.h"
#include "gpu/Surface.h"
#include "gpu/Types.h"

/// The Vulkan back end's public part: a device and, for a native window, a surface.
namespace veloria::gpu::vulkan {

/// Kinds of device, best first.
enum class DeviceType : std::uint8_t { discrete, integrated, virtualized, cpu, other };

/// "discrete", "integrated", "virtual", "cpu", "other".
const char* deviceTypeName(DeviceType type);

struct DeviceInfo {
  std::uint32_t index = 0;  ///< as VulkanOptions::gpu takes it
  std::string name;
  DeviceType type = DeviceType::other;
  bool usable = false;  ///< has everything this back end needs
};

/// Called with the text of each validation warning or error, on whichever thread caused it.
using ValidationHandler = std::function<void(std::string_view)>;

struct VulkanOptions {
  /// An index of listDevices(), a part of a device's name (in any case), or empty for the best one.
  std::string gpu;
  /// Validation layer with synchronisation checks; the environment variable VELORIA_VALIDATION=1 switches it on too.
  bool validation = false;
  ValidationHandler validationHandler;
  /// File that keeps compiled pipelines between runs; none if empty. An unusable file is ignored.
  std::filesystem::path pipelineCachePath;
  /// Threads of a compute group. Made smaller if the device's limit is lower.
  Size groupSize{32, 8};
};

/// The GPUs of this computer in the driver's order; empty without Vulkan. Needs no display.
std::vector<DeviceInfo> listDevices();

/// The index in `devices` of the best match for `wish` (see VulkanOptions::gpu). Throws NoDeviceError if there is none.
std::uint32_t chooseDevice(const std::vector<DeviceInfo>& devices, const std::string& wish);

/// Makes the device. Needs no display. Throws NoDeviceError if no GPU matches, and DeviceError if the driver fails or
/// validation is wanted but not installed.
std::unique_ptr<Device> makeVulkanDevice(const VulkanOptions& options);

/// Makes the native surface of a window; returns VK_NULL_HANDLE on failure. Called from Surface::configure() and
/// Surface::nextDrawable(), again after the surface was lost. The caller owns the result.
using NativeSurfaceFactory = std::function<VkSurfaceKHR(VkInstance)>;

/// A surface of `device` (one of makeVulkanDevice()), which must outlive it.
std::unique_ptr<Surface> makeSurface(Device& device, NativeSurfaceFactory makeNative);

/// True for software drivers that put nothing into an X11 window whose visual has alpha, although they report success
/// (seen with Mesa's, 22.3): use makeHostSurface() for such windows.
bool needsHostSurface(const Device& device);

/// A surface that copies its pictures to `buffers`. Its format is always bgra8Unorm. Its destructor waits for pictures
/// in flight; `device` must outlive it.
std::unique_ptr<Surface> makeHostSurface(Device& device, std::unique_ptr<PictureBuffers> buffers);

/// Validation warnings and errors since the device was made.
std::uint64_t validationMessageCount(const Device& device);

/// For tests: from now on `device` behaves as if the driver had lost it.
void simulateLoss(Device& device);

}  // namespace veloria::gpu::vulkan
