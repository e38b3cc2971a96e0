#include "gpu/vulkan/VulkanFrame.h"

#include <algorithm>
#include <utility>

#include "base/Log.h"
#include "gpu/Types.h"
#include "gpu/vulkan/VulkanDevice.h"
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
  visit(accessesOf(pass.target), draws ? Access::colorWrite : Access::computeWrite);
}

std::uint32_t groups(std::uint32_t threads, std::uint32_t groupLength) {
  return (threads + groupLength - 1) / groupLength;
}

constexpr std::uint32_t frameQueries = 2;        // start and end
constexpr std::uint32_t profilingQueries = 256;  // what a profiled frame starts out with

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
  auto info = typed<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
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
  if (barrier.needed()) barrier.record(commands_);
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
  auto info = typed<VkRenderPassBeginInfo>(VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO);
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
  // A driver that can't end or submit a command buffer counts as lost.
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
  // After a loss the GPU may still be working: nothing has waited for it.
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

VulkanTimestamps::VulkanTimestamps(const VulkanContext& context) : context_(context) {
  makePool(frameQueries);
}

void VulkanTimestamps::makePool(std::uint32_t queries) {
  if (context_.limits().secondsPerTick <= 0) return;
  auto info = typed<VkQueryPoolCreateInfo>(VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO);
  info.queryType = VK_QUERY_TYPE_TIMESTAMP;
  info.queryCount = queries;
  pool_ = created<QueryPoolOwner>(vkCreateQueryPool, context_.device(), info, "vkCreateQueryPool");
  settling_ = created<QueryPoolOwner>(vkCreateQueryPool, context_.device(), info, "vkCreateQueryPool");
  capacity_ = queries;
  ticks_.resize(queries);
  names_.reserve(queries / 2);
  passes_.reserve(queries / 2);
}

void VulkanTimestamps::begin(VkCommandBuffer commands, bool profiling) {
  const std::uint32_t needed = std::max(wanted_, profiling ? profilingQueries : frameQueries);
  if (pool_ && needed > capacity_) makePool(needed);
  profiling_ = profiling;
  inPass_ = false;
  used_ = 0;
  wanted_ = 0;
  names_.clear();
  if (!pool_) return;
  vkCmdResetQueryPool(commands, pool_.get(), 0, capacity_);
  vkCmdResetQueryPool(commands, settling_.get(), 0, capacity_);
  write(commands, VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT);
}

void VulkanTimestamps::write(VkCommandBuffer commands, VkPipelineStageFlagBits stage) {
  vkCmdWriteTimestamp(commands, stage, pool_.get(), used_);
  // The software driver writes a timestamp only when a later command waits for the work so far, as the next timestamp
  // does. Without a second one it would be written after the pass instead of before it.
  vkCmdWriteTimestamp(commands, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, settling_.get(), used_);
  ++used_;
}

void VulkanTimestamps::beginPass(VkCommandBuffer commands, const char* name) {
  if (!profiling_ || !pool_) return;
  wanted_ += 2;
  inPass_ = used_ + 3 <= capacity_;  // the pass, and the frame's end
  if (!inPass_) return;
  names_.push_back(name);
  write(commands, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT);
}

void VulkanTimestamps::endPass(VkCommandBuffer commands) {
  if (!inPass_) return;
  inPass_ = false;
  write(commands, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT);
}

void VulkanTimestamps::end(VkCommandBuffer commands) {
  wanted_ += frameQueries;
  if (pool_) write(commands, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT);
}

double VulkanTimestamps::seconds(std::uint64_t ticks) const {
  return static_cast<double>(ticks & context_.limits().timestampMask) * context_.limits().secondsPerTick;
}

void VulkanTimestamps::addPass(const char* name, double duration) {
  // Names are interned, so comparing pointers is enough.
  const auto found =
      std::find_if(passes_.begin(), passes_.end(), [&](const PassTime& pass) { return pass.name == name; });
  if (found != passes_.end()) {
    found->seconds += duration;
  } else {
    passes_.push_back({name, duration});
  }
}

void VulkanTimestamps::resolve(Completion& completion) {
  passes_.clear();
  if (!pool_ || used_ < frameQueries) return;
  const VkResult result =
      vkGetQueryPoolResults(context_.device(), pool_.get(), 0, used_, used_ * sizeof(std::uint64_t), ticks_.data(),
                            sizeof(std::uint64_t), VK_QUERY_RESULT_64_BIT | VK_QUERY_RESULT_WAIT_BIT);
  if (result != VK_SUCCESS) return;
  completion.gpuStart = seconds(ticks_[0]);
  completion.gpuEnd = completion.gpuStart + seconds(ticks_[used_ - 1] - ticks_[0]);
  for (std::size_t pass = 0; pass < names_.size(); ++pass) {
    addPass(names_[pass], seconds(ticks_[2 + 2 * pass] - ticks_[1 + 2 * pass]));
  }
  completion.passes = passes_;
}

}  // namespace veloria::gpu::vulkan
