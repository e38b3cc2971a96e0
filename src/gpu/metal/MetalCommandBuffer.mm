#include "gpu/metal/MetalCommandBuffer.h"

#include <utility>

#include "base/Log.h"
#include "gpu/Precondition.h"
#include "gpu/metal/MetalDevice.h"
#include "gpu/metal/MetalDrawable.h"
#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

namespace {

MTLRenderPassDescriptor* passOn(const MetalTexture& target) {
  MTLRenderPassDescriptor* pass = [MTLRenderPassDescriptor renderPassDescriptor];
  MTLRenderPassColorAttachmentDescriptor* colour = pass.colorAttachments[0];
  colour.texture = target.texture();
  colour.loadAction = MTLLoadActionClear;
  colour.storeAction = MTLStoreActionStore;
  colour.clearColor = MTLClearColorMake(0, 0, 0, 0);
  return pass;
}

}  // namespace

MetalCommandBuffer::MetalCommandBuffer(MetalDevice& device)
    : device_(device), computeEncoder_(*this), renderEncoder_(*this) {}

bool MetalCommandBuffer::begin() {
  @autoreleasepool {
    commands_ = [device_.queue() commandBuffer];
  }
  if (commands_ == nil) return false;
  presented_ = nullptr;
  openEncoder_ = OpenEncoder::none;
  recording_ = true;
  reopen();
  return true;
}

void MetalCommandBuffer::doSetLabel(std::string_view label) {
  commands_.label = metalString(label);
}

void MetalCommandBuffer::doAddCompletedHandler(CompletedHandler handler) {
  handlers_.push_back(std::move(handler));
}

ComputeEncoder* MetalCommandBuffer::doComputeEncoder(std::string_view label) {
  if (device_.lost()) return nullptr;
  @autoreleasepool {
    id<MTLComputeCommandEncoder> encoder = [commands_ computeCommandEncoder];
    if (encoder == nil) return nullptr;
    encoder.label = metalString(label);
    computeEncoder_.begin(encoder, device_.sampler());
  }
  openEncoder_ = OpenEncoder::compute;
  return &computeEncoder_;
}

RenderEncoder* MetalCommandBuffer::doRenderEncoder(const Texture& target, std::string_view label) {
  if (device_.lost()) return nullptr;
  const auto& texture = static_cast<const MetalTexture&>(target);
  @autoreleasepool {
    id<MTLRenderCommandEncoder> encoder = [commands_ renderCommandEncoderWithDescriptor:passOn(texture)];
    if (encoder == nil) return nullptr;
    encoder.label = metalString(label);
    renderEncoder_.begin(encoder, texture, device_.sampler());
  }
  openEncoder_ = OpenEncoder::render;
  return &renderEncoder_;
}

void MetalCommandBuffer::doPresent(Drawable& drawable) {
  presented_ = dynamic_cast<MetalDrawable*>(&drawable);
  require(presented_ != nullptr, "CommandBuffer::present: the drawable is another back end's");
}

void MetalCommandBuffer::doCommit() {
  recording_ = false;
  if (device_.lost()) {
    commands_ = nil;
    Completion completion;
    completion.failed = true;
    tell(completion);
    device_.requireAlive();
  }
  @autoreleasepool {
    if (presented_ != nullptr) presented_->present(commands_);
    device_.completion().committed(*this);
    MetalCommandBuffer* self = this;
    [commands_ addCompletedHandler:^(id<MTLCommandBuffer> commands) {
      self->completed(commands);
    }];
    [commands_ commit];
  }
}

void MetalCommandBuffer::doWait() {
  device_.completion().waitFor(*this);
}

void MetalCommandBuffer::doDiscard() {
  // The system stops the program when an encoder goes away that was never ended.
  if (openEncoder_ == OpenEncoder::compute) computeEncoder_.abandon();
  if (openEncoder_ == OpenEncoder::render) renderEncoder_.abandon();
  openEncoder_ = OpenEncoder::none;
  recording_ = false;
  handlers_.clear();
  commands_ = nil;
}

void MetalCommandBuffer::completed(id<MTLCommandBuffer> commands) noexcept {
  Completion completion;
  completion.failed = commands.status == MTLCommandBufferStatusError;
  if (completion.failed) {
    // Whatever the reason, what the textures hold now can't be trusted: everything is made anew, as after a loss.
    device_.markLost();
    NimbraLog::debugf("gpu: a command buffer failed: %s", plainString(commands.error.localizedDescription).c_str());
  } else {
    completion.gpuStart = commands.GPUStartTime;
    completion.gpuEnd = commands.GPUEndTime;
  }
  tell(completion);
  commands_ = nil;
  device_.completion().finished(*this);
}

void MetalCommandBuffer::tell(const Completion& completion) noexcept {
  for (const CompletedHandler& handler : handlers_) handler(completion);
  handlers_.clear();
}

}  // namespace veloria::gpu::metal
