#include "gpu/vulkan/VulkanDevice.h"

#include <algorithm>
#include <memory>

#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFormat.h"
#include "gpu/vulkan/VulkanFrame.h"
#include "gpu/vulkan/VulkanPipeline.h"
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

RenderPassOwner makeRenderPass(const VulkanContext& context, VkFormat format) {
  VkAttachmentDescription attachment{};
  attachment.format = format;
  attachment.samples = VK_SAMPLE_COUNT_1_BIT;
  attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
  attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
  attachment.stencilLoadOp = VK_ATTACHMENT_LOAD_OP_DONT_CARE;
  attachment.stencilStoreOp = VK_ATTACHMENT_STORE_OP_DONT_CARE;
  attachment.initialLayout = VK_IMAGE_LAYOUT_GENERAL;
  attachment.finalLayout = VK_IMAGE_LAYOUT_GENERAL;
  VkAttachmentReference reference{0, VK_IMAGE_LAYOUT_GENERAL};
  VkSubpassDescription subpass{};
  subpass.pipelineBindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
  subpass.colorAttachmentCount = 1;
  subpass.pColorAttachments = &reference;
  VkRenderPassCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO;
  info.attachmentCount = 1;
  info.pAttachments = &attachment;
  info.subpassCount = 1;
  info.pSubpasses = &subpass;
  VkRenderPass pass = VK_NULL_HANDLE;
  check(vkCreateRenderPass(context.device(), &info, nullptr, &pass), "vkCreateRenderPass");
  return {context.device(), pass};
}

}  // namespace

VulkanDevice::VulkanDevice(const VulkanOptions& options)
    : context_(options),
      timeline_(context_),
      retirement_(context_, timeline_),
      pipelineCache_(context_, options.pipelineCachePath),
      layout_(context_),
      completion_(context_, timeline_, retirement_) {}

VulkanDevice::~VulkanDevice() {
  completion_.drain();
  vkDeviceWaitIdle(context_.device());
}

void VulkanDevice::waitIdle() {
  completion_.drain();
  if (!lost()) timeline_.wait(timeline_.submitted());
}

VkRenderPass VulkanDevice::renderPassFor(PixelFormat format) {
  RenderPassOwner& pass = renderPasses_[format];
  if (!pass) pass = makeRenderPass(context_, vulkanFormat(format));
  return pass.get();
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
  VkCommandBufferBeginInfo info{};
  info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
  info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
  check(vkBeginCommandBuffer(once.commands, &info), "vkBeginCommandBuffer");
  recordBarrierOverAll(once.commands);
  return once;
}

std::uint64_t VulkanDevice::endOnce(OneTime& once) {
  recordBarrierOverAll(once.commands);
  check(vkEndCommandBuffer(once.commands), "vkEndCommandBuffer");
  once.number = timeline_.submit({.commands = once.commands});
  return once.number;
}

std::unique_ptr<Library> VulkanDevice::makeLibrary(std::span<const std::byte> bytes) {
  return std::make_unique<VulkanLibrary>(context_, bytes);
}

std::unique_ptr<FrameQueue> VulkanDevice::makeFrameQueue() {
  return std::make_unique<VulkanQueue>(*this);
}

std::shared_ptr<Texture> VulkanDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  context_.requireAlive();
  return std::make_shared<VulkanTexture>(*this, descriptor);
}

std::unique_ptr<Pipeline> VulkanDevice::doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) {
  context_.requireAlive();
  return std::make_unique<VulkanPipeline>(*this, static_cast<const VulkanLibrary&>(library), descriptor);
}

VulkanDevice& vulkanDevice(Device& device) {
  auto* vulkan = dynamic_cast<VulkanDevice*>(&device);
  if (vulkan == nullptr) throw PreconditionError("the device is not a Vulkan device");
  return *vulkan;
}

}  // namespace veloria::gpu::vulkan
