#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "gpu/Types.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanFrame.h"
#include "gpu/vulkan/VulkanTexture.h"

/// Decisions about a swapchain, from what a surface offers.
namespace veloria::gpu::vulkan {

/// The format for the wanted one: rgba16Float is an extended linear colour space (sRGB primaries, else Display P3) if
/// `extendedAllowed` and offered; otherwise bgra8Unorm, then rgba8Unorm, in the sRGB colour space. Never a format that
/// encodes by itself. Nothing if none of these is offered.
std::optional<VkSurfaceFormatKHR> chooseSurfaceFormat(std::span<const VkSurfaceFormatKHR> offered, PixelFormat wanted,
                                                      bool extendedAllowed = true);

/// Pre-multiplied, inherited, opaque, then post-multiplied. Some drivers report only opaque for transparent windows, so
/// this never fails.
VkCompositeAlphaFlagBitsKHR chooseCompositeAlpha(VkCompositeAlphaFlagsKHR offered);

/// Mailbox if offered, because FIFO blocks the caller while a window is hidden (Wayland); else FIFO, which always
/// exists.
VkPresentModeKHR choosePresentMode(std::span<const VkPresentModeKHR> offered);

/// Three images if the surface allows: one shown, one waiting, one being drawn.
std::uint32_t chooseImageCount(const VkSurfaceCapabilitiesKHR& capabilities);

/// The surface's own size if it has one, else the wanted size within its limits. A length of 0 means nothing can be
/// drawn.
Size chooseExtent(const VkSurfaceCapabilitiesKHR& capabilities, Size wanted);

/// Everything but the format.
struct SurfaceShape {
  Size extent;
  std::uint32_t imageCount = 0;
  VkPresentModeKHR presentMode = VK_PRESENT_MODE_FIFO_KHR;
  VkCompositeAlphaFlagBitsKHR compositeAlpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
  VkSurfaceTransformFlagBitsKHR transform = VK_SURFACE_TRANSFORM_IDENTITY_BIT_KHR;
  bool operator==(const SurfaceShape&) const = default;
};

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

  /// The first submission that uses the image waits for the semaphore.
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

/// The result of acquiring or presenting an image.
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
  /// The acquired drawable, or a fresh one; nullptr if none is free (see state()).
  SwapchainDrawable* acquire();
  bool hasAcquired() const { return acquired_ != nullptr; }
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
  SwapchainDrawable* acquired_ = nullptr;
  SwapchainState state_ = SwapchainState::good;
};

}  // namespace veloria::gpu::vulkan
