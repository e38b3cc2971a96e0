#include "gpu/vulkan/VulkanDevice.h"

#include <algorithm>
#include <memory>

#include "gpu/vulkan/VulkanCommandBuffer.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanLibrary.h"
#include "gpu/vulkan/VulkanQueue.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

void recordBarrierOverAll(VkCommandBuffer commands) {
  VkMemoryBarrier barrier{};
  barrier.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
  barrier.srcAccessMask = VK_ACCESS_MEMORY_WRITE_BIT;
  barrier.dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT;
  vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                       VK_PIPELINE_STAGE_ALL_COMMANDS_BIT | VK_PIPELINE_STAGE_HOST_BIT, 0, 1, &barrier, 0, nullptr, 0,
                       nullptr);
}

void beginCommands(VkCommandBuffer commands, VkCommandBufferUsageFlags usage) {
  VkCommandBufferBeginInfo info{};
  info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
  info.flags = usage;
  check(vkBeginCommandBuffer(commands, &info), "vkBeginCommandBuffer");
}

}  // namespace

VulkanDevice::VulkanDevice(const VulkanOptions& options)
    : context_(options),
      timeline_(context_),
      retirement_(context_, timeline_),
      pipelineCache_(context_, options.pipelineCachePath),
      layouts_(context_),
      barrierPool_(context_.makeCommandPool()),
      completion_(context_, timeline_, retirement_) {
  recordFullBarrier();
}

VulkanDevice::~VulkanDevice() {
  completion_.drain();
  vkDeviceWaitIdle(context_.device());
}

void VulkanDevice::waitIdle() {
  completion_.drain();
  if (!lost()) timeline_.wait(timeline_.submitted());
}

void VulkanDevice::recordFullBarrier() {
  fullBarrier_ = context_.allocateCommandBuffer(barrierPool_.get());
  beginCommands(fullBarrier_, VK_COMMAND_BUFFER_USAGE_SIMULTANEOUS_USE_BIT);
  recordBarrierOverAll(fullBarrier_);
  check(vkEndCommandBuffer(fullBarrier_), "vkEndCommandBuffer");
}

void VulkanDevice::bufferOpened(VulkanCommandBuffer& buffer) {
  openBuffers_.push_back(&buffer);
  retirement_.bufferOpened();
  if (openBuffers_.size() == 1) return;
  for (VulkanCommandBuffer* open : openBuffers_) open->markInterleaved();
}

void VulkanDevice::bufferClosed(VulkanCommandBuffer& buffer) {
  std::erase(openBuffers_, &buffer);
  retirement_.bufferClosed();
}

VulkanDevice::OneTime& VulkanDevice::freeOnce() {
  const std::uint64_t completed = timeline_.completed();
  const auto found =
      std::find_if(oneTimes_.begin(), oneTimes_.end(), [&](const OneTime& once) { return once.number <= completed; });
  if (found != oneTimes_.end()) return *found;
  OneTime once;
  once.pool = context_.makeCommandPool();
  once.commands = context_.allocateCommandBuffer(once.pool.get());
  oneTimes_.push_back(std::move(once));
  return oneTimes_.back();
}

VulkanDevice::OneTime& VulkanDevice::beginOnce() {
  context_.requireAlive();
  OneTime& once = freeOnce();
  check(vkResetCommandPool(context_.device(), once.pool.get(), 0), "vkResetCommandPool");
  beginCommands(once.commands, VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT);
  recordBarrierOverAll(once.commands);
  return once;
}

std::uint64_t VulkanDevice::endOnce(OneTime& once) {
  recordBarrierOverAll(once.commands);
  check(vkEndCommandBuffer(once.commands), "vkEndCommandBuffer");
  once.number = timeline_.submit({.commands = {&once.commands, 1}, .waits = {}});
  return once.number;
}

std::unique_ptr<Library> VulkanDevice::doMakeLibrary(std::span<const std::byte> bytes) {
  return std::make_unique<VulkanLibrary>(context_, bytes);
}

std::unique_ptr<CommandQueue> VulkanDevice::doMakeCommandQueue() {
  return std::make_unique<VulkanQueue>(*this);
}

std::shared_ptr<Texture> VulkanDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  context_.requireAlive();
  return std::make_shared<VulkanTexture>(*this, descriptor);
}

std::unique_ptr<ComputePipeline> VulkanDevice::doMakeComputePipeline(const Library& library,
                                                                     const std::string& function) {
  context_.requireAlive();
  return std::make_unique<VulkanComputePipeline>(*this, static_cast<const VulkanLibrary&>(library), function);
}

std::unique_ptr<RenderPipeline> VulkanDevice::doMakeRenderPipeline(const Library& library,
                                                                   const RenderPipelineDescriptor& descriptor) {
  context_.requireAlive();
  return std::make_unique<VulkanRenderPipeline>(*this, static_cast<const VulkanLibrary&>(library), descriptor);
}

VulkanDevice& vulkanDevice(Device& device) {
  auto* vulkan = dynamic_cast<VulkanDevice*>(&device);
  if (vulkan == nullptr) throw PreconditionError("the device is not a Vulkan device");
  return *vulkan;
}

}  // namespace veloria::gpu::vulkan
