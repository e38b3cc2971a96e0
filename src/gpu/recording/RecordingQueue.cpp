#include "gpu/recording/RecordingQueue.h"

#include <algorithm>

#include "gpu/Precondition.h"
#include "gpu/recording/RecordingDevice.h"

namespace veloria::gpu::recording {

RecordingQueue::RecordingQueue(RecordingDevice& device) : device_(device) {
  for (auto& buffer : buffers_) buffer = std::make_unique<RecordingCommandBuffer>(device);
}

RecordingQueue::~RecordingQueue() {
  device_.completeAll();
}

CommandBuffer* RecordingQueue::commandBuffer() {
  const bool open =
      std::any_of(buffers_.begin(), buffers_.end(), [](const auto& buffer) { return buffer->recording(); });
  require(!open, "CommandQueue::commandBuffer: the last one is neither committed nor discarded");
  if (device_.lost() || device_.failures().commandBuffer) return nullptr;
  RecordingCommandBuffer& buffer = *buffers_[next_];
  if (buffer.inFlight()) throw RecordingError("three command buffers are in flight: a device would wait here");
  buffer.begin(device_.nextBufferNumber());
  next_ = (next_ + 1) % buffers_.size();
  return &buffer;
}

}  // namespace veloria::gpu::recording
