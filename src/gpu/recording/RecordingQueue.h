#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "gpu/Device.h"
#include "gpu/recording/RecordingCommandBuffer.h"

namespace veloria::gpu::recording {

class RecordingQueue final : public CommandQueue {
 public:
  explicit RecordingQueue(RecordingDevice& device);
  ~RecordingQueue() override;

  /// Fails with RecordingError where a device would wait for the oldest of three, since here nobody would end the wait.
  CommandBuffer* commandBuffer() override;
  void setProfiling(bool on) override { profiling_ = on; }
  bool profiling() const { return profiling_; }

 private:
  RecordingDevice& device_;
  std::array<std::unique_ptr<RecordingCommandBuffer>, 3> buffers_;
  std::size_t next_ = 0;
  bool profiling_ = false;
};

}  // namespace veloria::gpu::recording
