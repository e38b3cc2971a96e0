#include "gpu/vulkan/VulkanFrame.h"

#include <utility>

#include "base/Log.h"
#include "gpu/Precondition.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanDrawable.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanPipeline.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::uint32_t coveringVertices = 3;

TextureAccesses& accessesOf(const Texture& texture) {
  return static_cast<const VulkanTexture&>(texture).accesses();
}

template <typename Visit>
void forEachAccess(const Pass& pass, Visit visit) {
  const bool draws = pass.pipeline.draws();
  const auto read = [&](const Texture* texture) {
    if (texture != nullptr) visit(accessesOf(*texture), draws ? Access::fragmentRead : Access::computeRead);
  };
  for (const Texture* texture : pass.textures) read(texture);
  for (const Texture* image : pass.images) read(image);
  visit(accessesOf(pass.target), draws ? Access::colourWrite : Access::computeWrite);
}

std::uint32_t groups(std::uint32_t threads, std::uint32_t groupLength) {
  return (threads + groupLength - 1) / groupLength;
}

}  // namespace

VulkanFrame::VulkanFrame(VulkanDevice& device)
    : device_(device),
      pool_(device.context().makeCommandPool()),
      commands_(device.context().allocateCommandBuffer(pool_.get())),
      textureSets_(device.context(), device.layout()),
      uniforms_(device.context(), device.layout()),
      timestamps_(device.context()) {}

void VulkanFrame::begin(const char* label, bool profiling) {
  check(vkResetCommandPool(device_.context().device(), pool_.get(), 0), "vkResetCommandPool");
  VkCommandBufferBeginInfo info{};
  info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
  info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
  check(vkBeginCommandBuffer(commands_, &info), "vkBeginCommandBuffer");
  textureSets_.begin(device_.texturesReleased());
  uniforms_.rewind();
  timestamps_.begin(commands_, profiling);
  hazards_ = device_.hazards();
  bound_ = VK_NULL_HANDLE;
  drawable_ = nullptr;
  awaiting_ = nullptr;
  drawn_ = false;
  presented_ = false;
  device_.retirement().frameBegun();
  device_.context().beginLabel(commands_, label);
}

void VulkanFrame::doRun(const Pass& pass) {
  const auto& pipeline = static_cast<const VulkanPipeline&>(pass.pipeline);
  VulkanDrawable* drawable = static_cast<const VulkanTexture&>(pass.target).drawable();
  if (drawable != nullptr && !std::exchange(drawn_, true)) {
    use(*drawable);
    drawable->recordFirstUse(commands_);
  }
  device_.context().beginLabel(commands_, pass.label);
  recordBarrier(pass);
  bind(pipeline, pass);
  if (pipeline.draws()) {
    draw(pipeline, pass.target);
  } else {
    dispatch(pipeline, pass.target.size());
  }
  device_.context().endLabel(commands_);
}

void VulkanFrame::recordBarrier(const Pass& pass) {
  hazards_.beginPass(device_.nextPass());
  forEachAccess(pass, [&](const TextureAccesses& texture, Access access) { hazards_.touch(texture, access); });
  const PassBarrier barrier = hazards_.endPass();
  forEachAccess(pass, [&](TextureAccesses& texture, Access access) { hazards_.note(texture, access); });
  if (!barrier.needed()) return;
  VkMemoryBarrier memory{};
  memory.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
  memory.srcAccessMask = barrier.sourceAccess;
  memory.dstAccessMask = barrier.targetAccess;
  vkCmdPipelineBarrier(commands_, barrier.sourceStages, barrier.targetStages, 0, 1, &memory, 0, nullptr, 0, nullptr);
}

void VulkanFrame::bind(const VulkanPipeline& pipeline, const Pass& pass) {
  if (bound_ != pipeline.get()) vkCmdBindPipeline(commands_, pipeline.bindPoint(), bound_ = pipeline.get());
  std::array<VkDescriptorSet, 2> sets{textureSets_.setFor(pass)};
  std::uint32_t setCount = 1;
  UniformSlice slice;
  if (!pass.bytes.empty()) {
    slice = uniforms_.push(pass.bytes);
    sets[setCount++] = slice.set;
  }
  vkCmdBindDescriptorSets(commands_, pipeline.bindPoint(), device_.layout().pipeline(), 0, setCount, sets.data(),
                          setCount - 1, &slice.offset);
}

void VulkanFrame::dispatch(const VulkanPipeline& pipeline, Size grid) {
  const Size group = device_.context().limits().groupSize;
  timestamps_.beginPass(commands_, pipeline.name());
  vkCmdDispatch(commands_, groups(grid.width, group.width), groups(grid.height, group.height), 1);
  timestamps_.endPass(commands_);
}

void VulkanFrame::draw(const VulkanPipeline& pipeline, const Texture& target) {
  const Size size = target.size();
  const VkRect2D area{{0, 0}, {size.width, size.height}};
  const VkViewport viewport{0, 0, static_cast<float>(size.width), static_cast<float>(size.height), 0, 1};
  const VkClearValue clear{};
  VkRenderPassBeginInfo info{};
  info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO;
  info.renderPass = device_.renderPassFor(target.format());
  info.framebuffer = static_cast<const VulkanTexture&>(target).framebuffer();
  info.renderArea = area;
  info.clearValueCount = 1;
  info.pClearValues = &clear;
  vkCmdBeginRenderPass(commands_, &info, VK_SUBPASS_CONTENTS_INLINE);
  vkCmdSetViewport(commands_, 0, 1, &viewport);
  vkCmdSetScissor(commands_, 0, 1, &area);
  timestamps_.beginPass(commands_, pipeline.name());
  vkCmdDraw(commands_, coveringVertices, 1, 0, 0);
  timestamps_.endPass(commands_);
  vkCmdEndRenderPass(commands_);
}

void VulkanFrame::use(VulkanDrawable& drawable) {
  require(drawable_ == nullptr || drawable_ == &drawable, "Frame: two drawables in one frame");
  drawable_ = &drawable;
}

void VulkanFrame::doPresent(Drawable& drawable) {
  auto* own = dynamic_cast<VulkanDrawable*>(&drawable);
  require(own != nullptr, "Frame::present: the drawable is another back end's");
  use(*own);
  if (own->awaitsCompletion()) awaiting_ = own;
  presented_ = true;
}

void VulkanFrame::finishRecording() {
  if (drawn_) drawable_->drawnInto();
  if (presented_) drawable_->recordPresent(commands_);
  timestamps_.end(commands_);
  device_.context().endLabel(commands_);
  device_.context().checkAlive(vkEndCommandBuffer(commands_), "vkEndCommandBuffer");
}

std::uint64_t VulkanFrame::submit() {
  Submission submission{commands_};
  if (drawable_ != nullptr) submission.wait = drawable_->acquireSemaphore();
  if (presented_) submission.signal = drawable_->presentSemaphore();
  const std::uint64_t number = device_.timeline().submit(submission);
  if (drawable_ != nullptr) drawable_->submitted(number);
  return number;
}

void VulkanFrame::doCommit(CompletedHandler handler) {
  handler_ = std::move(handler);
  std::uint64_t number = 0;
  try {
    device_.context().requireAlive();
    finishRecording();
    number = submit();
  } catch (const DeviceError& error) {
    fail();
    throw DeviceLostError(error.what());
  }
  device_.hazards() = hazards_;
  device_.retirement().frameCommitted();
  device_.completion().enqueue(number, *this);
  if (presented_) drawable_->present();
}

void VulkanFrame::fail() {
  // A driver that can't even end or submit a command buffer is as good as gone.
  device_.context().markLost();
  device_.retirement().frameCommitted();
  device_.completion().enqueue(0, *this);
  device_.completion().waitFor(*this);
}

void VulkanFrame::completed(bool failed) noexcept {
  Completion completion;
  completion.failed = failed;
  if (!failed) timestamps_.resolve(completion);
  if (awaiting_ != nullptr) awaiting_->completed(failed);
  if (handler_) handler_(completion);
  handler_ = nullptr;
}

VulkanQueue::VulkanQueue(VulkanDevice& device) : FrameQueue(device), device_(device) {
  for (auto& frame : frames_) frame = std::make_unique<VulkanFrame>(device);
}

VulkanQueue::~VulkanQueue() {
  for (const auto& frame : frames_) device_.completion().waitFor(*frame);
  // After a loss nobody waited for the GPU itself.
  if (device_.lost()) vkDeviceWaitIdle(device_.context().device());
}

Frame* VulkanQueue::doBegin(const char* label) {
  VulkanFrame& frame = *frames_[next_];
  device_.completion().waitFor(frame);
  if (device_.lost()) return nullptr;
  try {
    frame.begin(label, profiling_);
  } catch (const DeviceError& error) {
    NimbraLog::debugf("gpu: no frame: %s", error.what());
    return nullptr;
  }
  next_ = (next_ + 1) % frameCount;
  return &frame;
}

}  // namespace veloria::gpu::vulkan
