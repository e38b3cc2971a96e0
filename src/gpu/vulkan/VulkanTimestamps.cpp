#include "gpu/vulkan/VulkanTimestamps.h"

#include <algorithm>

#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::uint32_t frameQueries = 2;        // start and end
constexpr std::uint32_t profilingQueries = 256;  // what a profiled frame starts out with

}  // namespace

VulkanTimestamps::VulkanTimestamps(const VulkanContext& context) : context_(context) {
  makePool(frameQueries);
}

void VulkanTimestamps::makePool(std::uint32_t queries) {
  if (context_.limits().secondsPerTick <= 0) return;
  VkQueryPoolCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO;
  info.queryType = VK_QUERY_TYPE_TIMESTAMP;
  info.queryCount = queries;
  VkQueryPool pool = VK_NULL_HANDLE;
  check(vkCreateQueryPool(context_.device(), &info, nullptr, &pool), "vkCreateQueryPool");
  pool_ = {context_.device(), pool};
  VkQueryPool settling = VK_NULL_HANDLE;
  check(vkCreateQueryPool(context_.device(), &info, nullptr, &settling), "vkCreateQueryPool");
  settling_ = {context_.device(), settling};
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
  // The software driver notes a timestamp only when something after it waits for the work so far, as the next timestamp
  // does; without a second one it would come after the pass that it should stand in front of.
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
  // Names are interned, so that the pointer tells.
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
