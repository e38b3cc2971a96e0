#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "gpu/Device.h"

namespace veloria::gpu::metal {

class MetalCommandBuffer;
class MetalDevice;

/// Three command buffers in turn. Every queue submits to the device's one.
class MetalQueue final : public CommandQueue {
 public:
  explicit MetalQueue(MetalDevice& device);
  ~MetalQueue() override;

  CommandBuffer* commandBuffer() override;
  /// Does nothing: single passes are not measured here.
  void setProfiling(bool) override {}

 private:
  static constexpr std::size_t bufferCount = 3;

  MetalDevice& device_;
  std::array<std::unique_ptr<MetalCommandBuffer>, bufferCount> buffers_;
  std::size_t next_ = 0;
};

}  // namespace veloria::gpu::metal
