#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanLoader.h"

namespace veloria::gpu::vulkan {

/// The owner of a Vulkan object made from a VkDevice or VkInstance: move-only, destroys the object with itself.
/// `Destroy` is the vkDestroy or vkFree function, or the pointer to it, of (parent, handle, allocator).
template <typename Parent, typename Object, auto& Destroy>
class Owned {
 public:
  using Handle = Object;

  Owned() = default;
  Owned(Parent parent, Handle handle) : parent_(parent), handle_(handle) {}
  Owned(Owned&& other) noexcept : parent_(other.parent_), handle_(std::exchange(other.handle_, Handle{})) {}
  Owned& operator=(Owned&& other) noexcept {
    if (this != &other) {
      reset();
      parent_ = other.parent_;
      handle_ = std::exchange(other.handle_, Handle{});
    }
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { reset(); }

  Handle get() const { return handle_; }
  explicit operator bool() const { return handle_ != Handle{}; }
  void reset() {
    if (handle_ != Handle{}) Destroy(parent_, std::exchange(handle_, Handle{}), nullptr);
  }

 private:
  Parent parent_{};
  Handle handle_{};
};

/// A structure of the API with its type set and everything else 0.
template <typename Structure>
Structure typed(VkStructureType type) {
  Structure structure{};
  structure.sType = type;
  return structure;
}

/// Makes an object with the vkCreate function `create`. Throws as check() does.
template <typename Owner, typename Create, typename Info>
Owner created(Create create, VkDevice device, const Info& info, const char* what) {
  typename Owner::Handle handle{};
  check(create(device, &info, nullptr, &handle), what);
  return {device, handle};
}

template <typename Handle, auto& Destroy>
using DeviceOwned = Owned<VkDevice, Handle, Destroy>;

using BufferOwner = DeviceOwned<VkBuffer, vkDestroyBuffer>;
using CommandPoolOwner = DeviceOwned<VkCommandPool, vkDestroyCommandPool>;
using DescriptorPoolOwner = DeviceOwned<VkDescriptorPool, vkDestroyDescriptorPool>;
using DescriptorSetLayoutOwner = DeviceOwned<VkDescriptorSetLayout, vkDestroyDescriptorSetLayout>;
using FramebufferOwner = DeviceOwned<VkFramebuffer, vkDestroyFramebuffer>;
using ImageOwner = DeviceOwned<VkImage, vkDestroyImage>;
using ImageViewOwner = DeviceOwned<VkImageView, vkDestroyImageView>;
using MemoryOwner = DeviceOwned<VkDeviceMemory, vkFreeMemory>;
using PipelineCacheOwner = DeviceOwned<VkPipelineCache, vkDestroyPipelineCache>;
using PipelineLayoutOwner = DeviceOwned<VkPipelineLayout, vkDestroyPipelineLayout>;
using PipelineOwner = DeviceOwned<VkPipeline, vkDestroyPipeline>;
using QueryPoolOwner = DeviceOwned<VkQueryPool, vkDestroyQueryPool>;
using RenderPassOwner = DeviceOwned<VkRenderPass, vkDestroyRenderPass>;
using SamplerOwner = DeviceOwned<VkSampler, vkDestroySampler>;
using SemaphoreOwner = DeviceOwned<VkSemaphore, vkDestroySemaphore>;
using ShaderModuleOwner = DeviceOwned<VkShaderModule, vkDestroyShaderModule>;
using SurfaceOwner = Owned<VkInstance, VkSurfaceKHR, vkDestroySurfaceKHR>;
using SwapchainOwner = DeviceOwned<VkSwapchainKHR, vkDestroySwapchainKHR>;

struct InstanceDeleter {
  void operator()(VkInstance instance) const { vkDestroyInstance(instance, nullptr); }
};
using InstanceOwner = std::unique_ptr<std::remove_pointer_t<VkInstance>, InstanceDeleter>;

struct DeviceDeleter {
  void operator()(VkDevice device) const { vkDestroyDevice(device, nullptr); }
};
using DeviceOwner = std::unique_ptr<std::remove_pointer_t<VkDevice>, DeviceDeleter>;

/// True when the environment variable VELORIA_VALIDATION is "1".
bool validationInEnvironment();

/// A VkInstance with the surface extensions that exist here and, if wanted, validation. Messages may come from any
/// thread.
class VulkanInstance {
 public:
  /// Throws NoDeviceError without Vulkan, DeviceError if validation is wanted but absent.
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
  Owned<VkInstance, VkDebugUtilsMessengerEXT, VulkanInstance::destroyMessenger> messenger_;
};

/// Describes a physical device and whether this back end can use it.
DeviceInfo describeDevice(VkPhysicalDevice device, std::uint32_t index);

/// The first queue family that does graphics and compute; UINT32_MAX if there is none.
std::uint32_t findQueueFamily(VkPhysicalDevice device);

}  // namespace veloria::gpu::vulkan
