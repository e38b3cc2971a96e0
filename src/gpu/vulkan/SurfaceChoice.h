#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <optional>
#include <span>

#include "gpu/Types.h"

/// The decisions about a swapchain, as functions of what a surface offers.
namespace veloria::gpu::vulkan {

/// The format for the wanted one: rgba16Float is an extended linear colour space (sRGB primaries, else Display P3)
/// where `extendedAllowed` and offered; everything else, and what can't be had, is bgra8Unorm, then rgba8Unorm, in
/// the sRGB colour space. Never a format that encodes by itself. Nothing when none of these is offered.
std::optional<VkSurfaceFormatKHR> chooseSurfaceFormat(std::span<const VkSurfaceFormatKHR> offered, PixelFormat wanted,
                                                      bool extendedAllowed = true);

/// Pre-multiplied, inherited, opaque, then whatever is offered. Some drivers report only opaque for windows that
/// are transparent all the same, so this never fails.
VkCompositeAlphaFlagBitsKHR chooseCompositeAlpha(VkCompositeAlphaFlagsKHR offered);

/// Mailbox where offered, since presenting in FIFO mode blocks the caller while a window is hidden (Wayland), else
/// FIFO, which is everywhere.
VkPresentModeKHR choosePresentMode(std::span<const VkPresentModeKHR> offered);

/// Three images if the surface lets it: one shown, one waiting, one being drawn.
std::uint32_t chooseImageCount(const VkSurfaceCapabilitiesKHR& capabilities);

/// The wanted size in the surface's limits; what the surface says itself where it has a size of its own. A length of 0
/// means that nothing can be drawn.
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

}  // namespace veloria::gpu::vulkan
