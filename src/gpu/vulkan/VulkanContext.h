#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "gpu/vulkan/VulkanInstance.h"

namespace veloria::gpu::vulkan {

/// A buffer that stays mapped as long as it lives.
struct VulkanBuffer {
  MemoryOwner memory;
  BufferOwner buffer;
  std::span<std::byte> bytes;
};

/// Numbers of the device that this back end depends on.
struct VulkanLimits {
  VkDeviceSize uniformAlignment = 256;
  Size groupSize;
  double secondsPerTick = 0;        ///< 0 if there are no timestamps
  std::uint64_t timestampMask = 0;  ///< the valid bits of a timestamp
  bool swapchains = false;          ///< whether windows can be drawn into
};

/// The driver's side of a device: instance, physical and logical device, the one queue, memory.
class VulkanContext {
 public:
  explicit VulkanContext(const VulkanOptions& options);

  VkInstance instance() const { return instance_.get(); }
  VkPhysicalDevice physicalDevice() const { return physicalDevice_; }
  VkDevice device() const { return device_.get(); }
  VkQueue queue() const { return queue_; }
  std::uint32_t queueFamily() const { return queueFamily_; }
  const VkPhysicalDeviceProperties& properties() const { return properties_; }
  const VulkanLimits& limits() const { return limits_; }
  std::uint64_t validationMessageCount() const { return instance_.messageCount(); }

  bool lost() const { return lost_; }
  void markLost() { lost_ = true; }
  /// Throws DeviceLostError when the device is lost.
  void requireAlive() const;
  /// check(); also marks the device lost if `result` says so.
  void checkAlive(VkResult result, const char* what);

  MemoryOwner allocate(const VkMemoryRequirements& requirements, VkMemoryPropertyFlags required,
                       VkMemoryPropertyFlags preferred) const;
  /// A mapped, coherent buffer, of the `preferred` kind of memory if there is one.
  VulkanBuffer makeBuffer(VkDeviceSize size, VkBufferUsageFlags usage, VkMemoryPropertyFlags preferred) const;
  CommandPoolOwner makeCommandPool() const;
  VkCommandBuffer allocateCommandBuffer(VkCommandPool pool) const;
  SemaphoreOwner makeSemaphore() const;

  /// Names for debuggers and validation messages; nothing without validation.
  void setName(VkObjectType type, std::uint64_t handle, const std::string& name) const;
  void beginLabel(VkCommandBuffer commands, std::string_view label) const;
  void endLabel(VkCommandBuffer commands) const;

 private:
  void chooseDevice(const std::string& wish);
  void makeDevice();
  void readLimits(Size groupSize);
  void loadDebugFunctions();
  std::uint32_t memoryType(std::uint32_t allowed, VkMemoryPropertyFlags required,
                           VkMemoryPropertyFlags preferred) const;

  VulkanInstance instance_;
  VkPhysicalDevice physicalDevice_ = VK_NULL_HANDLE;
  std::uint32_t queueFamily_ = 0;
  VkPhysicalDeviceProperties properties_{};
  VkPhysicalDeviceMemoryProperties memory_{};
  VulkanLimits limits_;
  DeviceOwner device_;
  VkQueue queue_ = VK_NULL_HANDLE;
  std::atomic<bool> lost_{false};
  PFN_vkSetDebugUtilsObjectNameEXT setName_ = nullptr;
  PFN_vkCmdBeginDebugUtilsLabelEXT beginLabel_ = nullptr;
  PFN_vkCmdEndDebugUtilsLabelEXT endLabel_ = nullptr;
};

}  // namespace veloria::gpu::vulkan
