#include "gpu/vulkan/VulkanCommandBuffer.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "gpu/Precondition.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanDrawable.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFormat.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::size_t maxDrawables = 4;  // of one command buffer

}  // namespace

VulkanCommandBuffer::VulkanCommandBuffer(VulkanDevice& device)
    : device_(device),
      pool_(device.context().makeCommandPool()),
      commands_(device.context().allocateCommandBuffer(pool_.get())),
      uniforms_(device.context(), device.layouts().bytesLayout()),
      bindings_(device.context()),
      timestamps_(device.context()),
      computeEncoder_(*this),
      renderEncoder_(*this) {}

void VulkanCommandBuffer::begin(bool profiling) {
  check(vkResetCommandPool(device_.context().device(), pool_.get(), 0), "vkResetCommandPool");
  VkCommandBufferBeginInfo info{};
  info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
  info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
  check(vkBeginCommandBuffer(commands_, &info), "vkBeginCommandBuffer");
  uniforms_.rewind();
  bindings_.begin(device_.texturesReleased());
  timestamps_.begin(commands_, profiling);
  hazards_ = device_.hazards();
  drawables_.clear();
  presented_ = nullptr;
  awaiting_ = nullptr;
  label_.clear();
  interleaved_ = false;
  encoderOpen_ = false;
  recording_ = true;
  device_.bufferOpened(*this);
  reopen();
}

VulkanHazards& VulkanCommandBuffer::beginPass() {
  hazards_.beginPass(device_.nextPass());
  return hazards_;
}

void VulkanCommandBuffer::recordBarrier(const PassBarrier& barrier) const {
  if (!barrier.needed()) return;
  VkMemoryBarrier memory{};
  memory.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
  memory.srcAccessMask = barrier.sourceAccess;
  memory.dstAccessMask = barrier.targetAccess;
  vkCmdPipelineBarrier(commands_, barrier.sourceStages, barrier.targetStages, 0, 1, &memory, 0, nullptr, 0, nullptr);
}

VkRenderPass VulkanCommandBuffer::renderPassFor(const VulkanTexture& target) const {
  return device_.layouts().renderPassFor(vulkanFormat(target.format()));
}

void VulkanCommandBuffer::doSetLabel(std::string_view label) {
  label_.assign(label);
}

void VulkanCommandBuffer::doAddCompletedHandler(CompletedHandler handler) {
  handlers_.push_back(std::move(handler));
}

void VulkanCommandBuffer::openEncoder(std::string_view label) {
  encoderOpen_ = true;
  device_.context().beginLabel(commands_, label);
}

void VulkanCommandBuffer::encoderEnded() {
  encoderOpen_ = false;
  device_.context().endLabel(commands_);
}

ComputeEncoder* VulkanCommandBuffer::doComputeEncoder(std::string_view label) {
  if (device_.lost()) return nullptr;
  openEncoder(label);
  computeEncoder_.begin();
  return &computeEncoder_;
}

RenderEncoder* VulkanCommandBuffer::doRenderEncoder(const Texture& target, std::string_view label) {
  if (device_.lost()) return nullptr;
  const auto& texture = static_cast<const VulkanTexture&>(target);
  if (texture.drawable() != nullptr) useDrawable(*texture.drawable());
  openEncoder(label);
  renderEncoder_.begin(texture);
  return &renderEncoder_;
}

void VulkanCommandBuffer::useDrawable(VulkanDrawable& drawable) {
  if (std::find(drawables_.begin(), drawables_.end(), &drawable) != drawables_.end()) return;
  require(drawables_.size() < maxDrawables, "CommandBuffer::renderEncoder: more than 4 drawables in one buffer");
  drawables_.push_back(&drawable);
  drawable.recordFirstUse(commands_);
}

void VulkanCommandBuffer::doPresent(Drawable& drawable) {
  presented_ = dynamic_cast<VulkanDrawable*>(&drawable);
  require(presented_ != nullptr, "CommandBuffer::present: the drawable is another back end's");
  if (presented_->awaitsCompletion()) awaiting_ = presented_;
}

void VulkanCommandBuffer::prepareDrawables() {
  for (VulkanDrawable* drawable : drawables_) drawable->drawnInto();
  if (presented_ == nullptr) return;
  presented_->recordPresent(commands_);
  const bool drawnInto = std::find(drawables_.begin(), drawables_.end(), presented_) != drawables_.end();
  if (!drawnInto) drawables_.push_back(presented_);
}

std::uint64_t VulkanCommandBuffer::submit() {
  waits_.clear();
  for (const VulkanDrawable* drawable : drawables_) {
    if (drawable->acquireSemaphore() != VK_NULL_HANDLE) waits_.push_back(drawable->acquireSemaphore());
  }
  const std::array<VkCommandBuffer, 3> all{device_.fullBarrier(), commands_, device_.fullBarrier()};
  Submission submission;
  submission.commands = interleaved_ ? std::span(all) : std::span(all).subspan(1, 1);
  submission.waits = waits_;
  if (presented_ != nullptr) submission.signal = presented_->presentSemaphore();
  const std::uint64_t number = device_.timeline().submit(submission);
  for (VulkanDrawable* drawable : drawables_) drawable->submitted(number);
  return number;
}

void VulkanCommandBuffer::close() {
  recording_ = false;
  encoderOpen_ = false;
  device_.bufferClosed(*this);
}

void VulkanCommandBuffer::doCommit() {
  std::uint64_t number = 0;
  try {
    device_.context().requireAlive();
    prepareDrawables();
    timestamps_.end(commands_);
    device_.context().checkAlive(vkEndCommandBuffer(commands_), "vkEndCommandBuffer");
    number = submit();
  } catch (const DeviceError& error) {
    fail();
    throw DeviceLostError(error.what());
  }
  device_.hazards() = hazards_;
  if (interleaved_) device_.hazards().synchronizedUpTo(device_.passes());
  close();
  device_.completion().enqueue(number, *this);
  if (presented_ != nullptr) presented_->present();
}

void VulkanCommandBuffer::fail() {
  // A driver that can't even end or submit a command buffer is as good as gone.
  device_.context().markLost();
  close();
  device_.completion().enqueue(0, *this);
  device_.completion().waitFor(*this);
}

void VulkanCommandBuffer::doWait() {
  device_.completion().waitFor(*this);
}

void VulkanCommandBuffer::doDiscard() {
  handlers_.clear();
  close();
}

void VulkanCommandBuffer::completed(bool failed) noexcept {
  Completion completion;
  completion.failed = failed;
  if (!failed) timestamps_.resolve(completion);
  if (awaiting_ != nullptr) awaiting_->completed(failed);
  for (const CompletedHandler& handler : handlers_) handler(completion);
  handlers_.clear();
}

}  // namespace veloria::gpu::vulkan
