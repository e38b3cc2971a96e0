#include "gpu/vulkan/SurfaceChoice.h"

#include <algorithm>
#include <array>
#include <limits>

namespace veloria::gpu::vulkan {

namespace {

constexpr std::array<VkSurfaceFormatKHR, 2> extendedFormats{
    {{VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT},
     {VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_DISPLAY_P3_LINEAR_EXT}}};
constexpr std::array<VkSurfaceFormatKHR, 2> plainFormats{
    {{VK_FORMAT_B8G8R8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR},
     {VK_FORMAT_R8G8B8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR}}};

std::optional<VkSurfaceFormatKHR> firstOffered(std::span<const VkSurfaceFormatKHR> offered,
                                               std::span<const VkSurfaceFormatKHR> preferred) {
  for (const VkSurfaceFormatKHR& wish : preferred) {
    const bool found = std::any_of(offered.begin(), offered.end(), [&](const VkSurfaceFormatKHR& candidate) {
      return candidate.format == wish.format && candidate.colorSpace == wish.colorSpace;
    });
    if (found) return wish;
  }
  return std::nullopt;
}

// The value that says that a window takes the size of its swapchain.
constexpr std::uint32_t noSizeOfItsOwn = std::numeric_limits<std::uint32_t>::max();

}  // namespace

std::optional<VkSurfaceFormatKHR> chooseSurfaceFormat(std::span<const VkSurfaceFormatKHR> offered, PixelFormat wanted,
                                                      bool extendedAllowed) {
  if (wanted == PixelFormat::rgba16Float && extendedAllowed) {
    if (const auto extended = firstOffered(offered, extendedFormats)) return extended;
  }
  return firstOffered(offered, plainFormats);
}

VkCompositeAlphaFlagBitsKHR chooseCompositeAlpha(VkCompositeAlphaFlagsKHR offered) {
  for (const auto wish : {VK_COMPOSITE_ALPHA_PRE_MULTIPLIED_BIT_KHR, VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR,
                          VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR, VK_COMPOSITE_ALPHA_POST_MULTIPLIED_BIT_KHR}) {
    if ((offered & static_cast<VkCompositeAlphaFlagsKHR>(wish)) != 0) return wish;
  }
  return VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
}

VkPresentModeKHR choosePresentMode(std::span<const VkPresentModeKHR> offered) {
  const bool mailbox = std::find(offered.begin(), offered.end(), VK_PRESENT_MODE_MAILBOX_KHR) != offered.end();
  return mailbox ? VK_PRESENT_MODE_MAILBOX_KHR : VK_PRESENT_MODE_FIFO_KHR;
}

std::uint32_t chooseImageCount(const VkSurfaceCapabilitiesKHR& capabilities) {
  const std::uint32_t most = capabilities.maxImageCount == 0 ? noSizeOfItsOwn : capabilities.maxImageCount;
  return std::min(std::max(3U, capabilities.minImageCount), most);
}

Size chooseExtent(const VkSurfaceCapabilitiesKHR& capabilities, Size wanted) {
  const VkExtent2D& own = capabilities.currentExtent;
  if (own.width != noSizeOfItsOwn && own.height != noSizeOfItsOwn) return {own.width, own.height};
  const auto fit = [](std::uint32_t length, std::uint32_t least, std::uint32_t most) {
    return length == 0 ? 0 : std::max(least, std::min(length, most));
  };
  return {fit(wanted.width, capabilities.minImageExtent.width, capabilities.maxImageExtent.width),
          fit(wanted.height, capabilities.minImageExtent.height, capabilities.maxImageExtent.height)};
}

}  // namespace veloria::gpu::vulkan
