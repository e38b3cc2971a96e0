#pragma once

#include <vulkan/vulkan_core.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace veloria::gpu::vulkan {

/// The one owner of a Vulkan object that was made from a VkDevice or VkInstance: move-only, destroys what it holds
/// when it goes. `Destroy` is the vkDestroy or vkFree function of (parent, handle, allocator).
template <typename Parent, typename Handle, auto Destroy>
class Owned {
 public:
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

template <typename Handle, auto Destroy>
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

}  // namespace veloria::gpu::vulkan
