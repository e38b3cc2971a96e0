#pragma once

#include <vulkan/vulkan_core.h>

#include "gpu/Types.h"

namespace veloria::gpu::vulkan {

/// The result's name in the API.
const char* resultName(VkResult result);

/// Throws DeviceLostError for VK_ERROR_DEVICE_LOST and DeviceError for any other error; `what` names the call.
void check(VkResult result, const char* what);

}  // namespace veloria::gpu::vulkan
