#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "gpu/Device.h"

namespace veloria::gpu::vulkan {

class VulkanCommandBuffer;
class VulkanDevice;

/// Three command buffers in turn. Every queue submits to the device's one.
class VulkanQueue final : public CommandQueue {
 public:
  explicit VulkanQueue(VulkanDevice& device);
  ~VulkanQueue() override;

  CommandBuffer* commandBuffer() override;
  void setProfiling(bool on) override { profiling_ = on; }

 private:
  static constexpr std::size_t bufferCount = 3;

  VulkanDevice& device_;
  std::array<std::unique_ptr<VulkanCommandBuffer>, bufferCount> buffers_;
  std::size_t next_ = 0;
  bool profiling_ = false;
};

}  // namespace veloria::gpu::vulkan
