#include "gpu/metal/MetalEncoder.h"

#include "gpu/metal/MetalCommandBuffer.h"
#include "gpu/metal/MetalPipeline.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

namespace {

id<MTLTexture> textureOf(const Texture& texture) {
  return static_cast<const MetalTexture&>(texture).texture();
}

}  // namespace

void MetalComputeEncoder::begin(id<MTLComputeCommandEncoder> encoder, id<MTLSamplerState> sampler) {
  reopen();
  encoder_ = encoder;
  pipeline_ = nullptr;
  state_ = {};
  for (NSUInteger index = 0; index <= maxTextureIndex; ++index) [encoder_ setSamplerState:sampler atIndex:index];
}

void MetalComputeEncoder::abandon() {
  [encoder_ endEncoding];
  encoder_ = nil;
}

void MetalComputeEncoder::doSetPipeline(const ComputePipeline& pipeline) {
  pipeline_ = &static_cast<const MetalComputePipeline&>(pipeline);
  [encoder_ setComputePipelineState:pipeline_->state()];
}

void MetalComputeEncoder::doSetTexture(const Texture& texture, std::uint32_t index) {
  [encoder_ setTexture:textureOf(texture) atIndex:index];
  state_.textures[index] = true;
}

void MetalComputeEncoder::doSetBytes(std::span<const std::byte> bytes) {
  [encoder_ setBytes:bytes.data() length:bytes.size() atIndex:bufferIndex];
  state_.byteCount = bytes.size();
}

void MetalComputeEncoder::doDispatch(std::uint32_t width, std::uint32_t height) {
  requireBound(pipeline_->bindings(), state_.textures, state_.byteCount, pipeline_->function());
  [encoder_ dispatchThreads:MTLSizeMake(width, height, 1) threadsPerThreadgroup:pipeline_->groupSize()];
}

void MetalComputeEncoder::doEnd() {
  abandon();
  buffer_.encoderEnded();
}

void MetalRenderEncoder::begin(id<MTLRenderCommandEncoder> encoder, const MetalTexture& target,
                               id<MTLSamplerState> sampler) {
  reopen(target);
  encoder_ = encoder;
  pipeline_ = nullptr;
  state_ = {};
  for (NSUInteger index = 0; index <= maxTextureIndex; ++index) {
    [encoder_ setFragmentSamplerState:sampler atIndex:index];
  }
}

void MetalRenderEncoder::abandon() {
  [encoder_ endEncoding];
  encoder_ = nil;
}

void MetalRenderEncoder::doSetPipeline(const RenderPipeline& pipeline) {
  pipeline_ = &static_cast<const MetalRenderPipeline&>(pipeline);
  [encoder_ setRenderPipelineState:pipeline_->state()];
}

void MetalRenderEncoder::doSetTexture(const Texture& texture, std::uint32_t index) {
  [encoder_ setFragmentTexture:textureOf(texture) atIndex:index];
  state_.textures[index] = true;
}

void MetalRenderEncoder::doSetBytes(std::span<const std::byte> bytes) {
  [encoder_ setFragmentBytes:bytes.data() length:bytes.size() atIndex:bufferIndex];
  state_.byteCount = bytes.size();
}

void MetalRenderEncoder::doDraw(std::uint32_t vertexCount) {
  requireBound(pipeline_->bindings(), state_.textures, state_.byteCount, pipeline_->descriptor().fragmentFunction);
  [encoder_ drawPrimitives:MTLPrimitiveTypeTriangle vertexStart:0 vertexCount:vertexCount];
}

void MetalRenderEncoder::doEnd() {
  abandon();
  buffer_.encoderEnded();
}

}  // namespace veloria::gpu::metal
