#define VOLK_IMPLEMENTATION
#include "gpu/vulkan/VulkanLoader.h"

#include <mutex>

#include "gpu/Types.h"

namespace veloria::gpu::vulkan {

void loadVulkan() {
  static const bool loaded = volkInitialize() == VK_SUCCESS;
  if (!loaded) throw NoDeviceError("Vulkan is not installed here: its library, libvulkan.so.1, can't be loaded");
}

void loadFunctions(VkInstance instance) {
  static std::once_flag once;
  std::call_once(once, volkLoadInstance, instance);
}

}  // namespace veloria::gpu::vulkan
