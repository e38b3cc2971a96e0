#include "gpu/vulkan/VulkanQueue.h"

#include <algorithm>

#include "base/Log.h"
#include "gpu/Precondition.h"
#include "gpu/vulkan/VulkanCommandBuffer.h"
#include "gpu/vulkan/VulkanDevice.h"

namespace veloria::gpu::vulkan {

VulkanQueue::VulkanQueue(VulkanDevice& device) : device_(device) {
  for (auto& buffer : buffers_) buffer = std::make_unique<VulkanCommandBuffer>(device);
}

VulkanQueue::~VulkanQueue() {
  for (const auto& buffer : buffers_) {
    device_.completion().waitFor(*buffer);
    if (buffer->recording()) buffer->discard();
  }
  // After a loss nobody waited for the GPU itself.
  if (device_.lost()) vkDeviceWaitIdle(device_.context().device());
}

CommandBuffer* VulkanQueue::commandBuffer() {
  const bool open =
      std::any_of(buffers_.begin(), buffers_.end(), [](const auto& buffer) { return buffer->recording(); });
  require(!open, "CommandQueue::commandBuffer: the last one is neither committed nor discarded");
  VulkanCommandBuffer& buffer = *buffers_[next_];
  device_.completion().waitFor(buffer);
  if (device_.lost()) return nullptr;
  try {
    buffer.begin(profiling_);
  } catch (const DeviceError& error) {
    NimbraLog::debugf("gpu: no command buffer: %s", error.what());
    return nullptr;
  }
  next_ = (next_ + 1) % bufferCount;
  return &buffer;
}

}  // namespace veloria::gpu::vulkan
