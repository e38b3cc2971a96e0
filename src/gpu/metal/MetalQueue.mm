#include "gpu/metal/MetalQueue.h"

#include <algorithm>

#include "gpu/Precondition.h"
#include "gpu/metal/MetalCommandBuffer.h"
#include "gpu/metal/MetalDevice.h"

namespace veloria::gpu::metal {

MetalQueue::MetalQueue(MetalDevice& device) : device_(device) {
  for (auto& buffer : buffers_) buffer = std::make_unique<MetalCommandBuffer>(device);
}

MetalQueue::~MetalQueue() {
  for (const auto& buffer : buffers_) {
    device_.completion().waitFor(*buffer);
    if (buffer->recording()) buffer->discard();
  }
}

CommandBuffer* MetalQueue::commandBuffer() {
  const bool open =
      std::any_of(buffers_.begin(), buffers_.end(), [](const auto& buffer) { return buffer->recording(); });
  require(!open, "CommandQueue::commandBuffer: the last one is neither committed nor discarded");
  MetalCommandBuffer& buffer = *buffers_[next_];
  device_.completion().waitFor(buffer);
  if (device_.lost() || !buffer.begin()) return nullptr;
  next_ = (next_ + 1) % bufferCount;
  return &buffer;
}

}  // namespace veloria::gpu::metal
