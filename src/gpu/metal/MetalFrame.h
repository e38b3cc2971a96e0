#pragma once

#import <Metal/Metal.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "gpu/Frame.h"
#include "gpu/metal/MetalCompletion.h"

namespace veloria::gpu::metal {

class MetalDevice;
class MetalDrawable;
class MetalPipeline;

/// One of a queue's three. The command buffer is new for every frame; the rest is reused.
class MetalFrame final : public Frame, public CompletionClient {
 public:
  explicit MetalFrame(MetalDevice& device) : device_(device) {}
  ~MetalFrame() override { endComputing(); }

  /// Starts it again; it must not be pending. False if the device makes no command buffer.
  bool begin(const char* label);

 private:
  void doRun(const Pass& pass) override;
  void doPresent(Drawable& drawable) override;
  void doCommit(CompletedHandler handler) override;

  void compute(const MetalPipeline& pipeline, const Pass& pass);
  void draw(const MetalPipeline& pipeline, const Pass& pass);
  void beginComputing(const char* label);
  void endComputing();
  void completed(id<MTLCommandBuffer> commands) noexcept;
  void callHandler(const Completion& completion) noexcept;

  MetalDevice& device_;
  id<MTLCommandBuffer> commands_ = nil;
  // One encoder for all compute passes of one label in a row; each would cost as much as a pass.
  id<MTLComputeCommandEncoder> encoder_ = nil;
  std::string encoderLabel_;
  CompletedHandler handler_;
  MetalDrawable* presented_ = nullptr;
};

/// Three frames in turn. Every queue submits to the device's one.
class MetalQueue final : public FrameQueue {
 public:
  explicit MetalQueue(MetalDevice& device);
  ~MetalQueue() override;

  /// Does nothing: single passes are not measured here.
  void setProfiling(bool) override {}

 private:
  static constexpr std::size_t frameCount = 3;

  Frame* doBegin(const char* label) override;

  MetalDevice& device_;
  std::array<std::unique_ptr<MetalFrame>, frameCount> frames_;
  std::size_t next_ = 0;
};

}  // namespace veloria::gpu::metal
