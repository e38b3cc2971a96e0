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
#include "gpu/Surface.h"
#include "gpu/Types.h"

/// All that others need of the Vulkan back end: a device and, for a native window, a surface.
namespace veloria::gpu::vulkan {

/// Kinds of device, best first.
enum class DeviceType : std::uint8_t { discrete, integrated, virtualised, cpu, other };

/// "discrete", "integrated", "virtual", "cpu", "other".
const char* deviceTypeName(DeviceType type);

struct DeviceInfo {
  std::uint32_t index = 0;  ///< as VulkanOptions::gpu takes it
  std::string name;
  DeviceType type = DeviceType::other;
  bool usable = false;  ///< has all that this back end needs
};

/// Called with the text of each validation warning or error, on whichever thread caused it.
using ValidationHandler = std::function<void(std::string_view)>;

struct VulkanOptions {
  /// An index of listDevices(), a part of a device's name (in any case), or empty for the best one.
  std::string gpu;
  /// Validation layer with synchronisation checks; the environment variable VELORIA_VALIDATION=1 asks for it too.
  bool validation = false;
  ValidationHandler validationHandler;
  /// Where compiled pipelines are kept between runs; nothing is kept when empty. A file that can't be used is ignored.
  std::filesystem::path pipelineCachePath;
  /// Threads of a compute group. Made smaller where the device can't have as many.
  Size groupSize{32, 8};
};

/// The GPUs of this computer in the driver's order; empty when there is no Vulkan. Needs no display.
std::vector<DeviceInfo> listDevices();

/// The index in `devices` that `wish` (see VulkanOptions::gpu) means. Throws NoDeviceError when there is none.
std::uint32_t chooseDevice(const std::vector<DeviceInfo>& devices, const std::string& wish);

/// Makes the device. Needs no display. Throws NoDeviceError when there is no GPU as wished, and DeviceError when the
/// driver fails or validation is wanted and not installed.
std::unique_ptr<Device> makeVulkanDevice(const VulkanOptions& options);

/// Makes the native surface of a window; returns VK_NULL_HANDLE when the window can't have one. Called from
/// Surface::configure() and Surface::nextDrawable(), again after the surface was lost. The result is owned by the
/// caller.
using NativeSurfaceFactory = std::function<VkSurfaceKHR(VkInstance)>;

/// A surface of `device` (one of makeVulkanDevice()), which must outlive it.
std::unique_ptr<Surface> makeSurface(Device& device, NativeSurfaceFactory makeNative);

/// True for software drivers that put nothing into an X11 window whose visual has alpha, although they report success
/// (seen with Mesa's, 22.3): use makeHostSurface() for such windows.
bool needsHostSurface(const Device& device);

/// Puts a picture into a window: tightly packed rows from the top, blue, green, red, alpha (pre-multiplied). Called on
/// the device's completion thread, in the order of presenting; the bytes are valid during the call. Must not throw.
using PictureSink = std::function<void(std::span<const std::byte> rows, Size size)>;

/// A surface whose pictures are copied to memory and handed to `sink`. Its format is bgra8Unorm always. It waits for
/// pictures under way when it is destroyed; `device` must outlive it.
std::unique_ptr<Surface> makeHostSurface(Device& device, PictureSink sink);

/// Warnings and errors that validation reported since the device was made.
std::uint64_t validationMessageCount(const Device& device);

/// For tests: from now on `device` behaves as if the driver had lost it.
void simulateLoss(Device& device);

}  // namespace veloria::gpu::vulkan
