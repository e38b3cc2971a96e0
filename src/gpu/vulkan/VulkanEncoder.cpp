#include "gpu/vulkan/VulkanEncoder.h"

#include <string>

#include "gpu/vulkan/VulkanCommandBuffer.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

// What every dispatch and draw does first: the checks that need the function's own wishes, and the descriptor set.
VkDescriptorSet resolve(VulkanCommandBuffer& buffer, const BoundState& state) {
  const VulkanProgram& program = *state.program;
  if (state.byteCount < program.bindings.blockSize) {
    throw PreconditionError(std::string(program.name) + " wants " + std::to_string(program.bindings.blockSize) +
                            " bytes, " + std::to_string(state.byteCount) + " are set");
  }
  return buffer.bindings().setFor(program, state.textures);
}

template <typename Visit>
void forEachAccess(const BoundState& state, Access read, Access write, Visit visit) {
  for (std::size_t index = 0; index < state.textures.size(); ++index) {
    const TextureBinding& binding = state.program->bindings.textures[index];
    if (binding.reads) visit(state.textures[index]->accesses(), read);
    if (binding.writes) visit(state.textures[index]->accesses(), write);
  }
}

std::uint32_t groups(std::uint32_t threads, std::uint32_t groupLength) {
  return (threads + groupLength - 1) / groupLength;
}

}  // namespace

void VulkanBinder::bind(const BoundState& state, VkDescriptorSet textures) {
  const VulkanProgram& program = *state.program;
  if (pipeline_ != program.pipeline) {
    pipeline_ = program.pipeline;
    vkCmdBindPipeline(commands_, program.bindPoint, pipeline_);
  }
  const VkPipelineLayout layout = program.layout->pipeline.get();
  const bool layoutChanged = layout_ != layout;
  layout_ = layout;
  if (layoutChanged || textures_ != textures) {
    textures_ = textures;
    vkCmdBindDescriptorSets(commands_, program.bindPoint, layout, 0, 1, &textures, 0, nullptr);
  }
  const bool bytesChanged = bytes_.set != state.bytes.set || bytes_.offset != state.bytes.offset;
  if (program.bindings.blockSize > 0 && (layoutChanged || bytesChanged)) {
    bytes_ = state.bytes;
    vkCmdBindDescriptorSets(commands_, program.bindPoint, layout, 1, 1, &bytes_.set, 1, &bytes_.offset);
  } else if (layoutChanged) {
    bytes_ = {};
  }
}

void VulkanComputeEncoder::begin() {
  reopen();
  state_ = {};
  binder_.begin(buffer_.commands());
}

void VulkanComputeEncoder::doSetPipeline(const ComputePipeline& pipeline) {
  state_.program = &static_cast<const VulkanComputePipeline&>(pipeline).program();
}

void VulkanComputeEncoder::doSetTexture(const Texture& texture, std::uint32_t index) {
  state_.textures[index] = &static_cast<const VulkanTexture&>(texture);
}

void VulkanComputeEncoder::doSetBytes(std::span<const std::byte> bytes) {
  state_.bytes = buffer_.uniforms().push(bytes);
  state_.byteCount = bytes.size();
}

void VulkanComputeEncoder::doDispatch(std::uint32_t width, std::uint32_t height) {
  const VkDescriptorSet textures = resolve(buffer_, state_);
  const VulkanProgram& program = *state_.program;
  recordBarrier();
  binder_.bind(state_, textures);
  buffer_.timestamps().beginPass(buffer_.commands(), program.name);
  vkCmdDispatch(buffer_.commands(), groups(width, program.groupSize.width), groups(height, program.groupSize.height),
                1);
  buffer_.timestamps().endPass(buffer_.commands());
}

void VulkanComputeEncoder::recordBarrier() {
  VulkanHazards& hazards = buffer_.beginPass();
  const auto touch = [&](TextureAccesses& texture, Access access) { hazards.touch(texture, access); };
  forEachAccess(state_, Access::computeRead, Access::computeWrite, touch);
  buffer_.recordBarrier(hazards.endPass());
  const auto note = [&](TextureAccesses& texture, Access access) { hazards.note(texture, access); };
  forEachAccess(state_, Access::computeRead, Access::computeWrite, note);
}

void VulkanComputeEncoder::doEnd() {
  buffer_.encoderEnded();
}

void VulkanRenderEncoder::begin(const VulkanTexture& target) {
  reopen(target);
  target_ = &target;
  state_ = {};
  draws_.clear();
}

void VulkanRenderEncoder::doSetPipeline(const RenderPipeline& pipeline) {
  state_.program = &static_cast<const VulkanRenderPipeline&>(pipeline).program();
}

void VulkanRenderEncoder::doSetTexture(const Texture& texture, std::uint32_t index) {
  state_.textures[index] = &static_cast<const VulkanTexture&>(texture);
}

void VulkanRenderEncoder::doSetBytes(std::span<const std::byte> bytes) {
  state_.bytes = buffer_.uniforms().push(bytes);
  state_.byteCount = bytes.size();
}

void VulkanRenderEncoder::doDraw(std::uint32_t vertexCount) {
  draws_.push_back({state_, resolve(buffer_, state_), vertexCount});
}

void VulkanRenderEncoder::doEnd() {
  recordBarrier();
  recordPass();
  buffer_.encoderEnded();
}

void VulkanRenderEncoder::recordBarrier() {
  VulkanHazards& hazards = buffer_.beginPass();
  const auto touch = [&](TextureAccesses& texture, Access access) { hazards.touch(texture, access); };
  const auto note = [&](TextureAccesses& texture, Access access) { hazards.note(texture, access); };
  hazards.touch(target_->accesses(), Access::colourWrite);
  for (const Draw& draw : draws_) forEachAccess(draw.state, Access::fragmentRead, Access::fragmentRead, touch);
  buffer_.recordBarrier(hazards.endPass());
  hazards.note(target_->accesses(), Access::colourWrite);
  for (const Draw& draw : draws_) forEachAccess(draw.state, Access::fragmentRead, Access::fragmentRead, note);
}

void VulkanRenderEncoder::recordPass() {
  const VkCommandBuffer commands = buffer_.commands();
  const Size size = target_->size();
  const VkRect2D area{{0, 0}, {size.width, size.height}};
  const VkViewport viewport{0, 0, static_cast<float>(size.width), static_cast<float>(size.height), 0, 1};
  const VkClearValue clear{};
  VkRenderPassBeginInfo info{};
  info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO;
  info.renderPass = buffer_.renderPassFor(*target_);
  info.framebuffer = target_->framebuffer();
  info.renderArea = area;
  info.clearValueCount = 1;
  info.pClearValues = &clear;
  vkCmdBeginRenderPass(commands, &info, VK_SUBPASS_CONTENTS_INLINE);
  vkCmdSetViewport(commands, 0, 1, &viewport);
  vkCmdSetScissor(commands, 0, 1, &area);
  VulkanBinder binder;
  binder.begin(commands);
  for (const Draw& draw : draws_) {
    binder.bind(draw.state, draw.textures);
    buffer_.timestamps().beginPass(commands, draw.state.program->name);
    vkCmdDraw(commands, draw.vertexCount, 1, 0, 0);
    buffer_.timestamps().endPass(commands);
  }
  vkCmdEndRenderPass(commands);
}

}  // namespace veloria::gpu::vulkan
