#include "gpu/vulkan/VulkanCompletion.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

// Three frames of a good number of queues; more than that only costs an allocation.
constexpr std::size_t expectedEntries = 64;
// A wait checks this often whether the device was lost.
constexpr std::uint64_t lossCheckNanoseconds = 250'000'000;

SemaphoreOwner makeTimelineSemaphore(const VulkanContext& context) {
  auto type = typed<VkSemaphoreTypeCreateInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_TYPE_CREATE_INFO);
  type.semaphoreType = VK_SEMAPHORE_TYPE_TIMELINE;
  auto info = typed<VkSemaphoreCreateInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO);
  info.pNext = &type;
  return created<SemaphoreOwner>(vkCreateSemaphore, context.device(), info, "vkCreateSemaphore (timeline)");
}

}  // namespace

VulkanTimeline::VulkanTimeline(VulkanContext& context)
    : context_(context), semaphore_(makeTimelineSemaphore(context)) {}

std::uint64_t VulkanTimeline::submit(const Submission& submission) {
  context_.requireAlive();
  const std::uint64_t number = submitted_ + 1;
  // A binary semaphore's value is ignored, but must be there.
  const std::array<std::uint64_t, 2> values{number};
  const std::array<VkSemaphore, 2> signals{semaphore_.get(), submission.signal};
  const VkPipelineStageFlags waitStage = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
  auto timeline = typed<VkTimelineSemaphoreSubmitInfo>(VK_STRUCTURE_TYPE_TIMELINE_SEMAPHORE_SUBMIT_INFO);
  timeline.waitSemaphoreValueCount = submission.wait == VK_NULL_HANDLE ? 0 : 1;
  timeline.pWaitSemaphoreValues = values.data();
  timeline.signalSemaphoreValueCount = submission.signal == VK_NULL_HANDLE ? 1 : 2;
  timeline.pSignalSemaphoreValues = values.data();
  auto info = typed<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
  info.pNext = &timeline;
  info.waitSemaphoreCount = timeline.waitSemaphoreValueCount;
  info.pWaitSemaphores = &submission.wait;
  info.pWaitDstStageMask = &waitStage;
  info.commandBufferCount = 1;
  info.pCommandBuffers = &submission.commands;
  info.signalSemaphoreCount = timeline.signalSemaphoreValueCount;
  info.pSignalSemaphores = signals.data();
  const VkResult result = vkQueueSubmit(context_.queue(), 1, &info, VK_NULL_HANDLE);
  if (result != VK_SUCCESS) {
    context_.markLost();
    throw DeviceLostError(std::string("vkQueueSubmit: ") + resultName(result));
  }
  submitted_ = number;
  return number;
}

std::uint64_t VulkanTimeline::completed() const {
  std::uint64_t value = 0;
  if (vkGetSemaphoreCounterValue(context_.device(), semaphore_.get(), &value) != VK_SUCCESS) return 0;
  return value;
}

bool VulkanTimeline::wait(std::uint64_t number, std::uint64_t nanoseconds) const {
  const VkSemaphore semaphore = semaphore_.get();
  auto info = typed<VkSemaphoreWaitInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_WAIT_INFO);
  info.semaphoreCount = 1;
  info.pSemaphores = &semaphore;
  info.pValues = &number;
  const VkResult result = vkWaitSemaphores(context_.device(), &info, nanoseconds);
  if (result < VK_SUCCESS) context_.markLost();
  return result == VK_SUCCESS;
}

void VulkanTimeline::wait(std::uint64_t number) const {
  while (!wait(number, lossCheckNanoseconds)) context_.requireAlive();
}

void VulkanRetirement::retire(std::shared_ptr<void> resource) {
  {
    const std::lock_guard lock(mutex_);
    if (frameOpen_) {
      waiting_.push_back(std::move(resource));
      return;
    }
    entries_.push_back({timeline_.submitted(), std::move(resource)});
  }
  collect();
}

void VulkanRetirement::frameBegun() {
  const std::lock_guard lock(mutex_);
  frameOpen_ = true;
}

void VulkanRetirement::frameCommitted() {
  {
    const std::lock_guard lock(mutex_);
    frameOpen_ = false;
    if (waiting_.empty()) return;
    for (auto& resource : waiting_) entries_.push_back({timeline_.submitted(), std::move(resource)});
    waiting_.clear();
  }
  collect();
}

void VulkanRetirement::collect() {
  std::vector<Entry> free;
  {
    const std::lock_guard lock(mutex_);
    // A lost device may still use anything, so everything stays until the device is destroyed.
    if (entries_.empty() || context_.lost()) return;
    const std::uint64_t completed = timeline_.completed();
    const auto kept = std::stable_partition(entries_.begin(), entries_.end(),
                                            [&](const Entry& entry) { return entry.number > completed; });
    std::move(kept, entries_.end(), std::back_inserter(free));
    entries_.erase(kept, entries_.end());
  }
}

VulkanCompletion::VulkanCompletion(VulkanContext& context, const VulkanTimeline& timeline, VulkanRetirement& retirement)
    : context_(context), timeline_(timeline), retirement_(retirement) {
  entries_.reserve(expectedEntries);
  thread_ = std::thread([this] { run(); });
}

VulkanCompletion::~VulkanCompletion() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  work_.notify_one();
  thread_.join();
}

void VulkanCompletion::enqueue(std::uint64_t number, CompletionClient& client) {
  {
    const std::lock_guard lock(mutex_);
    client.pending_ = true;
    ++outstanding_;
    entries_.push_back({number, &client});
  }
  work_.notify_one();
}

void VulkanCompletion::waitFor(const CompletionClient& client) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return !client.pending_; });
}

void VulkanCompletion::drain() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return outstanding_ == 0; });
}

void VulkanCompletion::run() {
  std::vector<Entry> batch;
  batch.reserve(expectedEntries);
  while (true) {
    {
      std::unique_lock lock(mutex_);
      work_.wait(lock, [&] { return stopping_ || !entries_.empty(); });
      if (entries_.empty()) return;
      batch.swap(entries_);
    }
    for (const Entry& entry : batch) finish(entry);
    batch.clear();
  }
}

void VulkanCompletion::finish(const Entry& entry) {
  const bool done = waitUntilDone(entry.number);
  entry.client->completed(!done);
  retirement_.collect();
  {
    const std::lock_guard lock(mutex_);
    entry.client->pending_ = false;
    --outstanding_;
  }
  changed_.notify_all();
}

bool VulkanCompletion::waitUntilDone(std::uint64_t number) const {
  if (number == 0) return false;
  while (!context_.lost()) {
    if (timeline_.wait(number, lossCheckNanoseconds)) return !context_.lost();
  }
  return false;
}

}  // namespace veloria::gpu::vulkan
