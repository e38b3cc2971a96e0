#include "gpu/vulkan/VulkanDevice.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFrame.h"
#include "gpu/vulkan/VulkanInstance.h"
#include "gpu/vulkan/VulkanPipeline.h"
#include "gpu/vulkan/VulkanSurface.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr PassBarrier overAll{VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                              VK_PIPELINE_STAGE_ALL_COMMANDS_BIT | VK_PIPELINE_STAGE_HOST_BIT,
                              VK_ACCESS_MEMORY_WRITE_BIT, VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT};

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
  auto info = typed<VkRenderPassCreateInfo>(VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO);
  info.attachmentCount = 1;
  info.pAttachments = &attachment;
  info.subpassCount = 1;
  info.pSubpasses = &subpass;
  return created<RenderPassOwner>(vkCreateRenderPass, context.device(), info, "vkCreateRenderPass");
}

std::optional<std::uint32_t> toIndex(const std::string& wish) {
  std::uint32_t index = 0;
  const auto [end, error] = std::from_chars(wish.data(), wish.data() + wish.size(), index);
  if (error != std::errc() || end != wish.data() + wish.size()) return std::nullopt;
  return index;
}

bool matches(const DeviceInfo& device, const std::string& wish, const std::optional<std::uint32_t>& index) {
  if (wish.empty()) return true;
  if (index) return device.index == *index;
  return lowerCased(device.name).find(lowerCased(wish)) != std::string::npos;
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
  auto info = typed<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
  info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
  check(vkBeginCommandBuffer(once.commands, &info), "vkBeginCommandBuffer");
  overAll.record(once.commands);
  return once;
}

std::uint64_t VulkanDevice::endOnce(OneTime& once) {
  overAll.record(once.commands);
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

const char* deviceTypeName(DeviceType type) {
  switch (type) {
    case DeviceType::discrete:
      return "discrete";
    case DeviceType::integrated:
      return "integrated";
    case DeviceType::virtualized:
      return "virtual";
    case DeviceType::cpu:
      return "cpu";
    case DeviceType::other:
      break;
  }
  return "other";
}

std::vector<DeviceInfo> listDevices() try {
  const VulkanInstance instance(false, nullptr);
  std::vector<DeviceInfo> devices;
  for (const VkPhysicalDevice device : instance.physicalDevices()) {
    devices.push_back(describeDevice(device, static_cast<std::uint32_t>(devices.size())));
  }
  return devices;
} catch (const NoDeviceError&) {
  return {};
}

std::uint32_t chooseDevice(const std::vector<DeviceInfo>& devices, const std::string& wish) {
  const std::optional<std::uint32_t> index = toIndex(wish);
  const DeviceInfo* best = nullptr;
  bool anyMatch = false;
  for (const DeviceInfo& device : devices) {
    if (!matches(device, wish, index)) continue;
    anyMatch = true;
    if (device.usable && (best == nullptr || device.type < best->type)) best = &device;
  }
  if (best != nullptr) return best->index;
  if (devices.empty()) throw NoDeviceError("there is no Vulkan device");
  if (!anyMatch) throw NoDeviceError("no Vulkan device matches \"" + wish + "\"");
  throw NoDeviceError(
      "no Vulkan device has what is needed (1.2, graphics and compute in one queue, timeline "
      "semaphores, extended storage image formats)");
}

std::unique_ptr<Device> makeVulkanDevice(const VulkanOptions& options) {
  return std::make_unique<VulkanDevice>(options);
}

std::unique_ptr<Surface> makeSurface(Device& device, NativeSurfaceFactory makeNative) {
  return std::make_unique<VulkanSurface>(vulkanDevice(device), std::move(makeNative));
}

bool needsHostSurface(const Device& device) {
  const auto* vulkan = dynamic_cast<const VulkanDevice*>(&device);
  return vulkan != nullptr && vulkan->context().properties().deviceType == VK_PHYSICAL_DEVICE_TYPE_CPU;
}

std::unique_ptr<Surface> makeHostSurface(Device& device, std::unique_ptr<PictureBuffers> buffers) {
  return std::make_unique<VulkanHostSurface>(vulkanDevice(device), std::move(buffers));
}

std::uint64_t validationMessageCount(const Device& device) {
  const auto* vulkan = dynamic_cast<const VulkanDevice*>(&device);
  return vulkan == nullptr ? 0 : vulkan->context().validationMessageCount();
}

void simulateLoss(Device& device) {
  vulkanDevice(device).context().markLost();
}

}  // namespace veloria::gpu::vulkan
