#pragma once

#import <Metal/Metal.h>

#include <array>
#include <cstddef>
#include <span>

#include "gpu/CommandBuffer.h"

namespace veloria::gpu::metal {

class MetalCommandBuffer;
class MetalComputePipeline;
class MetalRenderPipeline;
class MetalTexture;

/// What an encoder has set, for the check before it runs.
struct BoundState {
  std::array<bool, maxTextureIndex + 1> textures{};
  std::size_t byteCount = 0;
};

class MetalComputeEncoder final : public ComputeEncoder {
 public:
  explicit MetalComputeEncoder(MetalCommandBuffer& buffer) : buffer_(buffer) {}
  void begin(id<MTLComputeCommandEncoder> encoder, id<MTLSamplerState> sampler);
  /// Ends it where its user has not.
  void abandon();

 private:
  void doSetPipeline(const ComputePipeline& pipeline) override;
  void doSetTexture(const Texture& texture, std::uint32_t index) override;
  void doSetBytes(std::span<const std::byte> bytes) override;
  void doDispatch(std::uint32_t width, std::uint32_t height) override;
  void doEnd() override;

  MetalCommandBuffer& buffer_;
  id<MTLComputeCommandEncoder> encoder_ = nil;
  const MetalComputePipeline* pipeline_ = nullptr;
  BoundState state_;
};

class MetalRenderEncoder final : public RenderEncoder {
 public:
  explicit MetalRenderEncoder(MetalCommandBuffer& buffer) : buffer_(buffer) {}
  void begin(id<MTLRenderCommandEncoder> encoder, const MetalTexture& target, id<MTLSamplerState> sampler);
  void abandon();

 private:
  void doSetPipeline(const RenderPipeline& pipeline) override;
  void doSetTexture(const Texture& texture, std::uint32_t index) override;
  void doSetBytes(std::span<const std::byte> bytes) override;
  void doDraw(std::uint32_t vertexCount) override;
  void doEnd() override;

  MetalCommandBuffer& buffer_;
  id<MTLRenderCommandEncoder> encoder_ = nil;
  const MetalRenderPipeline* pipeline_ = nullptr;
  BoundState state_;
};

}  // namespace veloria::gpu::metal
