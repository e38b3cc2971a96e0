#pragma once

#import <Metal/Metal.h>

#include <atomic>
#include <string>

#include "gpu/Device.h"
#include "gpu/metal/MetalCompletion.h"

namespace veloria::gpu::metal {

class MetalDevice final : public Device {
 public:
  explicit MetalDevice(id<MTLDevice> device);
  ~MetalDevice() override;

  std::string name() const override;
  bool lost() const override { return lost_; }
  void waitIdle() override { completion_.drain(); }
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<FrameQueue> makeFrameQueue() override;

  id<MTLDevice> device() const { return device_; }
  /// The queue that all frames submit to, so that everything runs in the order of commit().
  id<MTLCommandQueue> queue() const { return queue_; }
  /// Bilinear, clamped to the edge.
  id<MTLSamplerState> sampler() const { return sampler_; }
  MetalCompletion& completion() { return completion_; }
  void markLost() { lost_ = true; }
  /// Throws DeviceLostError when the device is lost.
  void requireAlive() const;

 private:
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<Pipeline> doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) override;

  id<MTLDevice> device_;
  id<MTLCommandQueue> queue_;
  id<MTLSamplerState> sampler_;
  MetalCompletion completion_;
  std::atomic<bool> lost_{false};
};

/// The device behind the interface. Throws PreconditionError for another back end's.
MetalDevice& metalDevice(Device& device);

}  // namespace veloria::gpu::metal
