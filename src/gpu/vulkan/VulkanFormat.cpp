#include "gpu/vulkan/VulkanFormat.h"

namespace veloria::gpu::vulkan {

VkFormat vulkanFormat(PixelFormat format) {
  switch (format) {
    case PixelFormat::r16Float:
      return VK_FORMAT_R16_SFLOAT;
    case PixelFormat::rg16Float:
      return VK_FORMAT_R16G16_SFLOAT;
    case PixelFormat::rgba8Unorm:
      return VK_FORMAT_R8G8B8A8_UNORM;
    case PixelFormat::bgra8Unorm:
      return VK_FORMAT_B8G8R8A8_UNORM;
    case PixelFormat::bgra8UnormSrgb:
      return VK_FORMAT_B8G8R8A8_SRGB;
    case PixelFormat::rgba16Float:
      return VK_FORMAT_R16G16B16A16_SFLOAT;
    case PixelFormat::invalid:
      break;
  }
  return VK_FORMAT_UNDEFINED;
}

PixelFormat pixelFormat(VkFormat format) {
  for (const PixelFormat candidate : {PixelFormat::r16Float, PixelFormat::rg16Float, PixelFormat::rgba8Unorm,
                                      PixelFormat::bgra8Unorm, PixelFormat::bgra8UnormSrgb, PixelFormat::rgba16Float}) {
    if (vulkanFormat(candidate) == format) return candidate;
  }
  return PixelFormat::invalid;
}

VkFormatFeatureFlags neededFeatures(TextureUsage usage) {
  VkFormatFeatureFlags features = 0;
  if (contains(usage, TextureUsage::shaderRead)) {
    features |= VK_FORMAT_FEATURE_SAMPLED_IMAGE_BIT | VK_FORMAT_FEATURE_SAMPLED_IMAGE_FILTER_LINEAR_BIT;
  }
  if (contains(usage, TextureUsage::shaderWrite)) features |= VK_FORMAT_FEATURE_STORAGE_IMAGE_BIT;
  if (contains(usage, TextureUsage::renderTarget)) features |= VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BIT;
  return features;
}

VkImageUsageFlags imageUsage(TextureUsage usage, VkFormatFeatureFlags features) {
  VkImageUsageFlags flags = VK_IMAGE_USAGE_TRANSFER_SRC_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
  if (contains(usage, TextureUsage::shaderRead)) {
    flags |= VK_IMAGE_USAGE_SAMPLED_BIT;
    if ((features & VK_FORMAT_FEATURE_STORAGE_IMAGE_BIT) != 0) flags |= VK_IMAGE_USAGE_STORAGE_BIT;
  }
  if (contains(usage, TextureUsage::shaderWrite)) flags |= VK_IMAGE_USAGE_STORAGE_BIT;
  if (contains(usage, TextureUsage::renderTarget)) flags |= VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
  return flags;
}

}  // namespace veloria::gpu::vulkan
