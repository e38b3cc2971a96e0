#include "gpu/vulkan/VulkanSwapchain.h"

#include <algorithm>
#include <string>
#include <utility>

#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFormat.h"

namespace veloria::gpu::vulkan {

namespace {

SwapchainOwner makeSwapchain(const VulkanContext& context, const VulkanSwapchain::Settings& settings) {
  VkSwapchainCreateInfoKHR info{};
  info.sType = VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR;
  info.surface = settings.surface;
  info.minImageCount = settings.shape.imageCount;
  info.imageFormat = settings.format.format;
  info.imageColorSpace = settings.format.colorSpace;
  info.imageExtent = {settings.shape.extent.width, settings.shape.extent.height};
  info.imageArrayLayers = 1;
  info.imageUsage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
  info.preTransform = settings.shape.transform;
  info.compositeAlpha = settings.shape.compositeAlpha;
  info.presentMode = settings.shape.presentMode;
  info.clipped = VK_TRUE;
  info.oldSwapchain = settings.old;
  VkSwapchainKHR swapchain = VK_NULL_HANDLE;
  check(vkCreateSwapchainKHR(context.device(), &info, nullptr, &swapchain), "vkCreateSwapchainKHR");
  return {context.device(), swapchain};
}

std::vector<VkImage> swapchainImages(const VulkanContext& context, VkSwapchainKHR swapchain) {
  std::uint32_t count = 0;
  check(vkGetSwapchainImagesKHR(context.device(), swapchain, &count, nullptr), "vkGetSwapchainImagesKHR");
  std::vector<VkImage> images(count);
  check(vkGetSwapchainImagesKHR(context.device(), swapchain, &count, images.data()), "vkGetSwapchainImagesKHR");
  return images;
}

}  // namespace

SwapchainState swapchainState(VkResult result) {
  switch (result) {
    case VK_SUCCESS:
      return SwapchainState::good;
    case VK_NOT_READY:
    case VK_TIMEOUT:
      return SwapchainState::busy;
    case VK_SUBOPTIMAL_KHR:
      return SwapchainState::suboptimal;
    case VK_ERROR_OUT_OF_DATE_KHR:
      return SwapchainState::outdated;
    case VK_ERROR_DEVICE_LOST:
      return SwapchainState::deviceLost;
    default:
      return SwapchainState::surfaceLost;
  }
}

SwapchainDrawable::SwapchainDrawable(VulkanDevice& device, VulkanSwapchain& swapchain, std::uint32_t index,
                                     VkImage image, const TextureDescriptor& descriptor)
    : swapchain_(swapchain),
      index_(index),
      texture_(device, descriptor, image, *this),
      presentSemaphore_(device.context().makeSemaphore()) {}

void SwapchainDrawable::recordFirstUse(VkCommandBuffer commands) {
  recordTransition(commands, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
}

void SwapchainDrawable::recordPresent(VkCommandBuffer commands) {
  recordTransition(commands, layout_, VK_IMAGE_LAYOUT_PRESENT_SRC_KHR);
  layout_ = VK_IMAGE_LAYOUT_UNDEFINED;
}

void SwapchainDrawable::recordTransition(VkCommandBuffer commands, VkImageLayout from, VkImageLayout to) const {
  const bool shown = to == VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
  VkImageMemoryBarrier barrier{};
  barrier.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER;
  barrier.srcAccessMask = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
  barrier.dstAccessMask = shown ? 0 : VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
  barrier.oldLayout = from;
  barrier.newLayout = to;
  barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
  barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
  barrier.image = texture_.image();
  barrier.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
  // The stage is the one that the acquire semaphore is waited for in.
  vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT,
                       shown ? VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT : VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT, 0,
                       0, nullptr, 0, nullptr, 1, &barrier);
}

void SwapchainDrawable::submitted(std::uint64_t number) {
  if (acquireSemaphore_ != VK_NULL_HANDLE) swapchain_.waited(acquireSemaphore_, number);
  acquireSemaphore_ = VK_NULL_HANDLE;
}

void SwapchainDrawable::present() {
  swapchain_.present(*this);
}

VulkanSwapchain::VulkanSwapchain(VulkanDevice& device, const Settings& settings)
    : device_(device), shape_(settings.shape), swapchain_(makeSwapchain(device.context(), settings)) {
  TextureDescriptor descriptor;
  descriptor.format = pixelFormat(settings.format.format);
  descriptor.size = settings.shape.extent;
  descriptor.usage = TextureUsage::renderTarget;
  descriptor.label = "drawable";
  std::uint32_t index = 0;
  for (const VkImage image : swapchainImages(device.context(), swapchain_.get())) {
    drawables_.push_back(std::make_unique<SwapchainDrawable>(device, *this, index++, image, descriptor));
  }
}

VulkanSwapchain::AcquireSemaphore* VulkanSwapchain::freeSemaphore() {
  const std::uint64_t completed = device_.timeline().completed();
  for (AcquireSemaphore& entry : semaphores_) {
    if (!entry.inUse && entry.waitedBy <= completed) return &entry;
  }
  // One image can be taken and each of the others be in flight.
  if (semaphores_.size() > drawables_.size() + 1) return nullptr;
  semaphores_.push_back({device_.context().makeSemaphore()});
  return &semaphores_.back();
}

SwapchainDrawable* VulkanSwapchain::acquire() {
  if (taken_ != nullptr) return taken_;
  AcquireSemaphore* entry = freeSemaphore();
  if (entry == nullptr) return nullptr;
  std::uint32_t index = 0;
  const VkResult result = vkAcquireNextImageKHR(device_.context().device(), swapchain_.get(), 0, entry->semaphore.get(),
                                                VK_NULL_HANDLE, &index);
  if (const SwapchainState state = swapchainState(result); state != SwapchainState::busy) state_ = state;
  if (result != VK_SUCCESS && result != VK_SUBOPTIMAL_KHR) return nullptr;
  entry->inUse = true;
  taken_ = drawables_[index].get();
  taken_->acquired(entry->semaphore.get());
  return taken_;
}

void VulkanSwapchain::waited(VkSemaphore semaphore, std::uint64_t number) {
  const auto found = std::find_if(semaphores_.begin(), semaphores_.end(),
                                  [&](const AcquireSemaphore& entry) { return entry.semaphore.get() == semaphore; });
  if (found == semaphores_.end()) return;
  found->inUse = false;
  found->waitedBy = number;
}

void VulkanSwapchain::present(SwapchainDrawable& drawable) {
  taken_ = nullptr;
  const VkSwapchainKHR swapchain = swapchain_.get();
  const VkSemaphore wait = drawable.presentSemaphore();
  const std::uint32_t index = drawable.index();
  VkPresentInfoKHR info{};
  info.sType = VK_STRUCTURE_TYPE_PRESENT_INFO_KHR;
  info.waitSemaphoreCount = 1;
  info.pWaitSemaphores = &wait;
  info.swapchainCount = 1;
  info.pSwapchains = &swapchain;
  info.pImageIndices = &index;
  state_ = swapchainState(vkQueuePresentKHR(device_.context().queue(), &info));
  if (state_ == SwapchainState::deviceLost) device_.context().markLost();
}

}  // namespace veloria::gpu::vulkan
