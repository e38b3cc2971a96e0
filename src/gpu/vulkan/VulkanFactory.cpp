#include "gpu/vulkan/VulkanFactory.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "base/PlainText.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanHostSurface.h"
#include "gpu/vulkan/VulkanInstance.h"
#include "gpu/vulkan/VulkanSurface.h"

namespace veloria::gpu::vulkan {

namespace {

std::optional<std::uint32_t> toIndex(const std::string& wish) {
  std::uint32_t index = 0;
  const auto [end, error] = std::from_chars(wish.data(), wish.data() + wish.size(), index);
  if (error != std::errc() || end != wish.data() + wish.size()) return std::nullopt;
  return index;
}

bool matches(const DeviceInfo& device, const std::string& wish, const std::optional<std::uint32_t>& index) {
  if (wish.empty()) return true;
  if (index) return device.index == *index;
  return lowerCased(device.name).find(lowerCased(wish)) != std::string::npos;
}

}  // namespace

const char* deviceTypeName(DeviceType type) {
  switch (type) {
    case DeviceType::discrete:
      return "discrete";
    case DeviceType::integrated:
      return "integrated";
    case DeviceType::virtualised:
      return "virtual";
    case DeviceType::cpu:
      return "cpu";
    case DeviceType::other:
      break;
  }
  return "other";
}

std::vector<DeviceInfo> listDevices() try {
  const VulkanInstance instance(false, nullptr);
  std::vector<DeviceInfo> devices;
  for (const VkPhysicalDevice device : instance.physicalDevices()) {
    devices.push_back(describeDevice(device, static_cast<std::uint32_t>(devices.size())));
  }
  return devices;
} catch (const NoDeviceError&) {
  return {};
}

std::uint32_t chooseDevice(const std::vector<DeviceInfo>& devices, const std::string& wish) {
  const std::optional<std::uint32_t> index = toIndex(wish);
  const DeviceInfo* best = nullptr;
  bool anyMatch = false;
  for (const DeviceInfo& device : devices) {
    if (!matches(device, wish, index)) continue;
    anyMatch = true;
    if (device.usable && (best == nullptr || device.type < best->type)) best = &device;
  }
  if (best != nullptr) return best->index;
  if (devices.empty()) throw NoDeviceError("there is no Vulkan device");
  if (!anyMatch) throw NoDeviceError("no Vulkan device matches \"" + wish + "\"");
  throw NoDeviceError(
      "no Vulkan device has what is needed (1.2, graphics and compute in one queue, timeline "
      "semaphores, extended storage image formats)");
}

std::unique_ptr<Device> makeVulkanDevice(const VulkanOptions& options) {
  return std::make_unique<VulkanDevice>(options);
}

std::unique_ptr<Surface> makeSurface(Device& device, NativeSurfaceFactory makeNative) {
  return std::make_unique<VulkanSurface>(vulkanDevice(device), std::move(makeNative));
}

bool needsHostSurface(const Device& device) {
  const auto* vulkan = dynamic_cast<const VulkanDevice*>(&device);
  return vulkan != nullptr && vulkan->context().properties().deviceType == VK_PHYSICAL_DEVICE_TYPE_CPU;
}

std::unique_ptr<Surface> makeHostSurface(Device& device, PictureSink sink) {
  return std::make_unique<VulkanHostSurface>(vulkanDevice(device), std::move(sink));
}

std::uint64_t validationMessageCount(const Device& device) {
  const auto* vulkan = dynamic_cast<const VulkanDevice*>(&device);
  return vulkan == nullptr ? 0 : vulkan->context().validationMessageCount();
}

void simulateLoss(Device& device) {
  vulkanDevice(device).context().markLost();
}

}  // namespace veloria::gpu::vulkan
