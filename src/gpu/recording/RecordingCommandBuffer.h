#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gpu/CommandBuffer.h"
#include "gpu/recording/RecordingLog.h"

namespace veloria::gpu::recording {

class RecordingCommandBuffer;
class RecordingDevice;
class RecordingTexture;

class RecordingComputeEncoder final : public ComputeEncoder {
 public:
  explicit RecordingComputeEncoder(RecordingCommandBuffer& buffer) : buffer_(buffer) {}
  void begin(std::string_view label);

 private:
  void doSetPipeline(const ComputePipeline& pipeline) override;
  void doSetTexture(const Texture& texture, std::uint32_t index) override;
  void doSetBytes(std::span<const std::byte> bytes) override;
  void doDispatch(std::uint32_t width, std::uint32_t height) override;
  void doEnd() override;

  RecordingCommandBuffer& buffer_;
  Call state_;
};

class RecordingRenderEncoder final : public RenderEncoder {
 public:
  explicit RecordingRenderEncoder(RecordingCommandBuffer& buffer) : buffer_(buffer) {}
  void begin(const Texture& target, std::string_view label);

 private:
  void doSetPipeline(const RenderPipeline& pipeline) override;
  void doSetTexture(const Texture& texture, std::uint32_t index) override;
  void doSetBytes(std::span<const std::byte> bytes) override;
  void doDraw(std::uint32_t vertexCount) override;
  void doEnd() override;

  RecordingCommandBuffer& buffer_;
  Call state_;
};

/// Writes what it is asked to the device's log at once, also when it is discarded later.
class RecordingCommandBuffer final : public CommandBuffer {
 public:
  explicit RecordingCommandBuffer(RecordingDevice& device);

  void begin(std::uint64_t number);
  bool recording() const { return recording_; }
  bool inFlight() const { return inFlight_; }
  /// Calls the handlers.
  void complete(const Completion& completion);

  RecordingDevice& device() { return device_; }
  /// Adds the call to the log, with this buffer's number.
  void record(Call call);
  void encoderEnded(const std::string& label);
  /// The device's own texture. Throws RecordingError for another's.
  RecordingTexture& ownTexture(const Texture& texture) const;

 private:
  void doSetLabel(std::string_view label) override;
  void doAddCompletedHandler(CompletedHandler handler) override;
  ComputeEncoder* doComputeEncoder(std::string_view label) override;
  RenderEncoder* doRenderEncoder(const Texture& target, std::string_view label) override;
  void doPresent(Drawable& drawable) override;
  void doCommit() override;
  void doWait() override;
  void doDiscard() override;
  bool encoderOpen() const override { return encoderOpen_; }

  RecordingDevice& device_;
  RecordingComputeEncoder computeEncoder_;
  RecordingRenderEncoder renderEncoder_;
  std::vector<CompletedHandler> handlers_;
  std::uint64_t number_ = 0;
  std::string label_;
  bool recording_ = false;
  bool inFlight_ = false;
  bool encoderOpen_ = false;
};

}  // namespace veloria::gpu::recording
