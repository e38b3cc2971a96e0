#pragma once

// Defines the functions of the API, vkCreateDevice and the like, as pointers.
#include <volk.h>

namespace veloria::gpu::vulkan {

/// Loads Vulkan's library, which the program does not link, and what is called without an instance. Throws
/// NoDeviceError if it isn't installed. Any thread.
void loadVulkan();

/// Sets all other functions, once, by the first instance: the library's own find the driver through the object they
/// are called with, so they serve every instance. Extensions that only some instances have are not among them. Any
/// thread.
void loadFunctions(VkInstance instance);

}  // namespace veloria::gpu::vulkan
