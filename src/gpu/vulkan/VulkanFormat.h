#pragma once

#include <vulkan/vulkan_core.h>

#include "gpu/Types.h"

namespace veloria::gpu::vulkan {

VkFormat vulkanFormat(PixelFormat format);

/// `invalid` for a format that this interface does not have.
PixelFormat pixelFormat(VkFormat format);

/// How an image of this format is used for `usage` where the device has `features` for it. Copies both ways are
/// always in. A texture that functions read can be read through a storage binding too, if its format can.
VkImageUsageFlags imageUsage(TextureUsage usage, VkFormatFeatureFlags features);

/// What the device must offer for `usage`.
VkFormatFeatureFlags neededFeatures(TextureUsage usage);

}  // namespace veloria::gpu::vulkan
