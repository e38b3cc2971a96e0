#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "gpu/vulkan/SurfaceChoice.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanDrawable.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;
class VulkanSwapchain;

/// One image of a swapchain.
class SwapchainDrawable final : public VulkanDrawable {
 public:
  SwapchainDrawable(VulkanDevice& device, VulkanSwapchain& swapchain, std::uint32_t index, VkImage image,
                    const TextureDescriptor& descriptor);

  const Texture& texture() const override { return texture_; }
  void recordFirstUse(VkCommandBuffer commands) override;
  void drawnInto() override { layout_ = VK_IMAGE_LAYOUT_GENERAL; }
  void recordPresent(VkCommandBuffer commands) override;
  VkSemaphore acquireSemaphore() const override { return acquireSemaphore_; }
  VkSemaphore presentSemaphore() const override { return presentSemaphore_.get(); }
  void submitted(std::uint64_t number) override;
  void present() override;

  /// The semaphore is waited for by the first submission that touches the image.
  void acquired(VkSemaphore semaphore) { acquireSemaphore_ = semaphore; }
  std::uint32_t index() const { return index_; }

 private:
  void recordTransition(VkCommandBuffer commands, VkImageLayout from, VkImageLayout to) const;

  VulkanSwapchain& swapchain_;
  std::uint32_t index_;
  VulkanTexture texture_;
  VkImageLayout layout_ = VK_IMAGE_LAYOUT_UNDEFINED;  // as committed work leaves it
  VkSemaphore acquireSemaphore_ = VK_NULL_HANDLE;
  SemaphoreOwner presentSemaphore_;
};

/// What came of asking for an image or of presenting one.
enum class SwapchainState : std::uint8_t { good, busy, suboptimal, outdated, surfaceLost, deviceLost };
SwapchainState swapchainState(VkResult result);

/// The images of a surface at one size and in one format.
class VulkanSwapchain {
 public:
  struct Settings {
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    VkSurfaceFormatKHR format{};
    SurfaceShape shape;
    VkSwapchainKHR old = VK_NULL_HANDLE;  ///< the one that this replaces
  };
  /// Throws DeviceError.
  VulkanSwapchain(VulkanDevice& device, const Settings& settings);

  VkSwapchainKHR get() const { return swapchain_.get(); }
  /// The drawable that is taken, or a fresh one; nullptr when none is free. state() says more.
  SwapchainDrawable* acquire();
  bool hasTaken() const { return taken_ != nullptr; }
  const SurfaceShape& shape() const { return shape_; }
  SwapchainState state() const { return state_; }

 private:
  friend class SwapchainDrawable;
  struct AcquireSemaphore {
    SemaphoreOwner semaphore;
    bool inUse = false;
    std::uint64_t waitedBy = 0;
  };
  AcquireSemaphore* freeSemaphore();
  void waited(VkSemaphore semaphore, std::uint64_t number);
  void present(SwapchainDrawable& drawable);

  VulkanDevice& device_;
  SurfaceShape shape_;
  SwapchainOwner swapchain_;
  std::vector<std::unique_ptr<SwapchainDrawable>> drawables_;
  std::vector<AcquireSemaphore> semaphores_;
  SwapchainDrawable* taken_ = nullptr;
  SwapchainState state_ = SwapchainState::good;
};

}  // namespace veloria::gpu::vulkan
