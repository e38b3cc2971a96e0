#include "gpu/CommandBuffer.h"

#include <utility>

#include "gpu/Precondition.h"
#include "gpu/Surface.h"

namespace veloria::gpu {

namespace {

void requireShaderUsage(const Texture& texture) {
  const TextureUsage usage = texture.descriptor().usage;
  require(contains(usage, TextureUsage::shaderRead) || contains(usage, TextureUsage::shaderWrite),
          "setTexture: the texture was not made for use in a function");
}

void requireBytes(std::span<const std::byte> bytes, std::uint32_t index) {
  require(index == bufferIndex, "setBytes: the only buffer index is 0");
  require(!bytes.empty() && bytes.size() <= maxInlineBytes, "setBytes: not 1 to 4096 bytes");
}

}  // namespace

void ComputeEncoder::reopen() {
  open_ = true;
  hasPipeline_ = false;
}

void ComputeEncoder::setPipeline(const ComputePipeline& pipeline) {
  require(open_, "ComputeEncoder::setPipeline: the encoder has ended");
  doSetPipeline(pipeline);
  hasPipeline_ = true;
}

void ComputeEncoder::setTexture(const Texture& texture, std::uint32_t index) {
  require(open_, "ComputeEncoder::setTexture: the encoder has ended");
  require(index <= maxTextureIndex, "ComputeEncoder::setTexture: the index is above 3");
  requireShaderUsage(texture);
  doSetTexture(texture, index);
}

void ComputeEncoder::setBytes(std::span<const std::byte> bytes, std::uint32_t index) {
  require(open_, "ComputeEncoder::setBytes: the encoder has ended");
  requireBytes(bytes, index);
  doSetBytes(bytes);
}

void ComputeEncoder::dispatchThreads(std::uint32_t width, std::uint32_t height) {
  require(open_, "ComputeEncoder::dispatchThreads: the encoder has ended");
  require(hasPipeline_, "ComputeEncoder::dispatchThreads: no pipeline is set");
  require(width >= 1 && width <= maxTextureLength && height >= 1 && height <= maxTextureLength,
          "ComputeEncoder::dispatchThreads: the grid is not 1 to 16384 in each direction");
  doDispatch(width, height);
}

void ComputeEncoder::endEncoding() {
  require(open_, "ComputeEncoder::endEncoding: the encoder has ended already");
  open_ = false;
  doEnd();
}

void RenderEncoder::reopen(const Texture& target) {
  open_ = true;
  hasPipeline_ = false;
  target_ = &target;
}

void RenderEncoder::setPipeline(const RenderPipeline& pipeline) {
  require(open_, "RenderEncoder::setPipeline: the encoder has ended");
  require(pipeline.descriptor().format == target_->format(),
          "RenderEncoder::setPipeline: the pipeline was made for another format than the target's");
  doSetPipeline(pipeline);
  hasPipeline_ = true;
}

void RenderEncoder::setFragmentTexture(const Texture& texture, std::uint32_t index) {
  require(open_, "RenderEncoder::setFragmentTexture: the encoder has ended");
  require(index <= maxTextureIndex, "RenderEncoder::setFragmentTexture: the index is above 3");
  require(&texture != target_, "RenderEncoder::setFragmentTexture: the texture is the pass's own target");
  requireShaderUsage(texture);
  doSetTexture(texture, index);
}

void RenderEncoder::setFragmentBytes(std::span<const std::byte> bytes, std::uint32_t index) {
  require(open_, "RenderEncoder::setFragmentBytes: the encoder has ended");
  requireBytes(bytes, index);
  doSetBytes(bytes);
}

void RenderEncoder::draw(std::uint32_t vertexCount) {
  require(open_, "RenderEncoder::draw: the encoder has ended");
  require(hasPipeline_, "RenderEncoder::draw: no pipeline is set");
  require(vertexCount > 0 && vertexCount % 3 == 0, "RenderEncoder::draw: not a multiple of 3 vertices");
  doDraw(vertexCount);
}

void RenderEncoder::endEncoding() {
  require(open_, "RenderEncoder::endEncoding: the encoder has ended already");
  open_ = false;
  doEnd();
}

void CommandBuffer::reopen() {
  state_ = State::open;
  presents_ = false;
}

void CommandBuffer::setLabel(std::string_view label) {
  require(state_ == State::open, "CommandBuffer::setLabel: the buffer is not open");
  doSetLabel(label);
}

void CommandBuffer::addCompletedHandler(CompletedHandler handler) {
  require(state_ == State::open, "CommandBuffer::addCompletedHandler: the buffer is not open");
  require(static_cast<bool>(handler), "CommandBuffer::addCompletedHandler: the handler is empty");
  doAddCompletedHandler(std::move(handler));
}

ComputeEncoder* CommandBuffer::computeEncoder(std::string_view label) {
  require(state_ == State::open, "CommandBuffer::computeEncoder: the buffer is not open");
  require(!encoderOpen(), "CommandBuffer::computeEncoder: another encoder is open");
  return doComputeEncoder(label);
}

RenderEncoder* CommandBuffer::renderEncoder(const Texture& target, std::string_view label) {
  require(state_ == State::open, "CommandBuffer::renderEncoder: the buffer is not open");
  require(!encoderOpen(), "CommandBuffer::renderEncoder: another encoder is open");
  require(!presents_, "CommandBuffer::renderEncoder: the drawable is presented already");
  require(contains(target.descriptor().usage, TextureUsage::renderTarget),
          "CommandBuffer::renderEncoder: the texture was not made as a render target");
  return doRenderEncoder(target, label);
}

void CommandBuffer::present(Drawable& drawable) {
  require(state_ == State::open, "CommandBuffer::present: the buffer is not open");
  require(!encoderOpen(), "CommandBuffer::present: an encoder is open");
  require(!presents_, "CommandBuffer::present: the buffer presents a drawable already");
  if (drawable.onScreen()) doPresent(drawable);
  presents_ = true;
}

void CommandBuffer::commit() {
  require(state_ == State::open, "CommandBuffer::commit: the buffer is not open");
  require(!encoderOpen(), "CommandBuffer::commit: an encoder is open");
  state_ = State::committed;
  doCommit();
}

void CommandBuffer::waitUntilCompleted() {
  require(state_ == State::committed, "CommandBuffer::waitUntilCompleted: the buffer is not committed");
  doWait();
}

void CommandBuffer::discard() {
  require(state_ == State::open, "CommandBuffer::discard: the buffer is not open");
  state_ = State::discarded;
  doDiscard();
}

}  // namespace veloria::gpu
