#include "gpu/metal/MetalFrame.h"

#include <utility>

#include "base/Log.h"
#include "gpu/Types.h"
#include "gpu/metal/MetalDevice.h"
#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalPipeline.h"
#include "gpu/metal/MetalSurface.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

namespace {

// A binding of set 0 is a texture's index, that of the block a buffer's.
constexpr NSUInteger firstImage = maxTextures;
constexpr NSUInteger targetIndex = maxTextures + maxImages;
constexpr NSUInteger blockIndex = 0;
constexpr NSUInteger coveringVertices = 3;

id<MTLTexture> textureOf(const Texture& texture) {
  return static_cast<const MetalTexture&>(texture).texture();
}

MTLRenderPassDescriptor* passOn(const Texture& target) {
  MTLRenderPassDescriptor* pass = [MTLRenderPassDescriptor renderPassDescriptor];
  MTLRenderPassColorAttachmentDescriptor* color = pass.colorAttachments[0];
  color.texture = textureOf(target);
  color.loadAction = MTLLoadActionClear;
  color.storeAction = MTLStoreActionStore;
  color.clearColor = MTLClearColorMake(0, 0, 0, 0);
  return pass;
}

}  // namespace

bool MetalFrame::begin(const char* label) {
  endComputing();
  @autoreleasepool {
    commands_ = [device_.queue() commandBuffer];
    commands_.label = metalString(label);
  }
  presented_ = nullptr;
  return commands_ != nil;
}

void MetalFrame::doRun(const Pass& pass) {
  const auto& pipeline = static_cast<const MetalPipeline&>(pass.pipeline);
  @autoreleasepool {
    if (pipeline.draws()) {
      draw(pipeline, pass);
    } else {
      compute(pipeline, pass);
    }
  }
}

void MetalFrame::beginComputing(const char* label) {
  if (encoder_ != nil && encoderLabel_ == label) return;
  endComputing();
  encoder_ = [commands_ computeCommandEncoder];
  encoder_.label = metalString(label);
  encoderLabel_ = label;
  for (NSUInteger index = 0; index < maxTextures; ++index) {
    [encoder_ setSamplerState:device_.sampler() atIndex:index];
  }
}

// The system stops the program when an encoder goes away that was never ended.
void MetalFrame::endComputing() {
  [encoder_ endEncoding];
  encoder_ = nil;
}

void MetalFrame::compute(const MetalPipeline& pipeline, const Pass& pass) {
  beginComputing(pass.label);
  [encoder_ setComputePipelineState:pipeline.computeState()];
  for (NSUInteger index = 0; index < maxTextures && pass.textures[index] != nullptr; ++index) {
    [encoder_ setTexture:textureOf(*pass.textures[index]) atIndex:index];
  }
  for (NSUInteger index = 0; index < maxImages && pass.images[index] != nullptr; ++index) {
    [encoder_ setTexture:textureOf(*pass.images[index]) atIndex:firstImage + index];
  }
  [encoder_ setTexture:textureOf(pass.target) atIndex:targetIndex];
  if (!pass.bytes.empty()) [encoder_ setBytes:pass.bytes.data() length:pass.bytes.size() atIndex:blockIndex];
  const Size grid = pass.target.size();
  [encoder_ dispatchThreads:MTLSizeMake(grid.width, grid.height, 1) threadsPerThreadgroup:pipeline.groupSize()];
}

void MetalFrame::draw(const MetalPipeline& pipeline, const Pass& pass) {
  endComputing();
  id<MTLRenderCommandEncoder> encoder = [commands_ renderCommandEncoderWithDescriptor:passOn(pass.target)];
  encoder.label = metalString(pass.label);
  [encoder setRenderPipelineState:pipeline.renderState()];
  for (NSUInteger index = 0; index < maxTextures && pass.textures[index] != nullptr; ++index) {
    [encoder setFragmentTexture:textureOf(*pass.textures[index]) atIndex:index];
    [encoder setFragmentSamplerState:device_.sampler() atIndex:index];
  }
  if (!pass.bytes.empty()) [encoder setFragmentBytes:pass.bytes.data() length:pass.bytes.size() atIndex:blockIndex];
  [encoder drawPrimitives:MTLPrimitiveTypeTriangle vertexStart:0 vertexCount:coveringVertices];
  [encoder endEncoding];
}

void MetalFrame::doPresent(Drawable& drawable) {
  presented_ = dynamic_cast<MetalDrawable*>(&drawable);
  require(presented_ != nullptr, "Frame::present: the drawable is another back end's");
}

void MetalFrame::doCommit(CompletedHandler handler) {
  endComputing();
  handler_ = std::move(handler);
  if (device_.lost()) {
    commands_ = nil;
    Completion completion;
    completion.failed = true;
    callHandler(completion);
    device_.requireAlive();
  }
  @autoreleasepool {
    if (presented_ != nullptr) presented_->present(commands_);
    device_.completion().committed(*this);
    MetalFrame* self = this;
    [commands_ addCompletedHandler:^(id<MTLCommandBuffer> commands) {
      self->completed(commands);
    }];
    [commands_ commit];
  }
}

void MetalFrame::completed(id<MTLCommandBuffer> commands) noexcept {
  Completion completion;
  completion.failed = commands.status == MTLCommandBufferStatusError;
  if (completion.failed) {
    // Whatever the reason, what the textures hold now can't be trusted: everything is made anew, as after a loss.
    device_.markLost();
    NimbraLog::debugf("gpu: a frame failed: %s", plainString(commands.error.localizedDescription).c_str());
  } else {
    completion.gpuStart = commands.GPUStartTime;
    completion.gpuEnd = commands.GPUEndTime;
  }
  callHandler(completion);
  commands_ = nil;
  device_.completion().finished(*this);
}

void MetalFrame::callHandler(const Completion& completion) noexcept {
  if (handler_) handler_(completion);
  handler_ = nullptr;
}

MetalQueue::MetalQueue(MetalDevice& device) : FrameQueue(device), device_(device) {
  for (auto& frame : frames_) frame = std::make_unique<MetalFrame>(device);
}

MetalQueue::~MetalQueue() {
  for (const auto& frame : frames_) device_.completion().waitFor(*frame);
}

Frame* MetalQueue::doBegin(const char* label) {
  MetalFrame& frame = *frames_[next_];
  device_.completion().waitFor(frame);
  if (device_.lost() || !frame.begin(label)) return nullptr;
  next_ = (next_ + 1) % frameCount;
  return &frame;
}

}  // namespace veloria::gpu::metal
