#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanOwner.h"

namespace veloria::gpu::vulkan {

/// True when the environment variable VELORIA_VALIDATION is "1".
bool validationInEnvironment();

/// A VkInstance with whatever surface extensions exist here, and validation when wanted. Messages may come from any
/// thread.
class VulkanInstance {
 public:
  /// Throws NoDeviceError where there is no Vulkan, DeviceError where validation is wanted and absent.
  VulkanInstance(bool validation, ValidationHandler handler);

  VkInstance get() const { return instance_.get(); }
  bool debugUtils() const { return static_cast<bool>(messenger_); }
  std::uint64_t messageCount() const;
  std::vector<VkPhysicalDevice> physicalDevices() const;

 private:
  struct Messages;
  static void destroyMessenger(VkInstance instance, VkDebugUtilsMessengerEXT messenger,
                               const VkAllocationCallbacks* allocator);
  static VkBool32 VKAPI_PTR report(VkDebugUtilsMessageSeverityFlagBitsEXT severity,
                                   VkDebugUtilsMessageTypeFlagsEXT types,
                                   const VkDebugUtilsMessengerCallbackDataEXT* data, void* user);
  VkDebugUtilsMessengerCreateInfoEXT messengerInfo() const;
  void makeMessenger();

  std::shared_ptr<Messages> messages_;
  InstanceOwner instance_;
  Owned<VkInstance, VkDebugUtilsMessengerEXT, &VulkanInstance::destroyMessenger> messenger_;
};

/// What a physical device is and whether it has what this back end needs.
DeviceInfo describeDevice(VkPhysicalDevice device, std::uint32_t index);

/// The first queue family that does graphics and compute; UINT32_MAX when there is none.
std::uint32_t findQueueFamily(VkPhysicalDevice device);

}  // namespace veloria::gpu::vulkan
