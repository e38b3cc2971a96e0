#pragma once

#import <Metal/Metal.h>

#include <vector>

#include "gpu/CommandBuffer.h"
#include "gpu/metal/MetalCompletion.h"
#include "gpu/metal/MetalEncoder.h"

namespace veloria::gpu::metal {

class MetalDevice;
class MetalDrawable;

/// One of a queue's three. The system's command buffer is new for every frame, the rest is used again.
class MetalCommandBuffer final : public CommandBuffer, public CompletionClient {
 public:
  explicit MetalCommandBuffer(MetalDevice& device);

  /// Starts it anew; it must not be pending. False when the device makes no command buffer.
  bool begin();
  bool recording() const { return recording_; }
  void encoderEnded() { openEncoder_ = OpenEncoder::none; }

 private:
  void doSetLabel(std::string_view label) override;
  void doAddCompletedHandler(CompletedHandler handler) override;
  ComputeEncoder* doComputeEncoder(std::string_view label) override;
  RenderEncoder* doRenderEncoder(const Texture& target, std::string_view label) override;
  void doPresent(Drawable& drawable) override;
  void doCommit() override;
  void doWait() override;
  void doDiscard() override;
  bool encoderOpen() const override { return openEncoder_ != OpenEncoder::none; }

  void completed(id<MTLCommandBuffer> commands) noexcept;
  void tell(const Completion& completion) noexcept;

  enum class OpenEncoder : std::uint8_t { none, compute, render };

  MetalDevice& device_;
  id<MTLCommandBuffer> commands_ = nil;
  MetalComputeEncoder computeEncoder_;
  MetalRenderEncoder renderEncoder_;
  std::vector<CompletedHandler> handlers_;
  MetalDrawable* presented_ = nullptr;
  OpenEncoder openEncoder_ = OpenEncoder::none;
  bool recording_ = false;
};

}  // namespace veloria::gpu::metal
