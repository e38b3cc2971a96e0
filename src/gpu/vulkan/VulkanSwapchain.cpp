#include "gpu/vulkan/VulkanSwapchain.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <utility>

#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::array<VkSurfaceFormatKHR, 2> extendedFormats{
    {{VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT},
     {VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_DISPLAY_P3_LINEAR_EXT}}};
constexpr std::array<VkSurfaceFormatKHR, 2> plainFormats{
    {{VK_FORMAT_B8G8R8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR},
     {VK_FORMAT_R8G8B8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR}}};

std::optional<VkSurfaceFormatKHR> firstOffered(std::span<const VkSurfaceFormatKHR> offered,
                                               std::span<const VkSurfaceFormatKHR> preferred) {
  for (const VkSurfaceFormatKHR& wish : preferred) {
    const bool found = std::any_of(offered.begin(), offered.end(), [&](const VkSurfaceFormatKHR& candidate) {
      return candidate.format == wish.format && candidate.colorSpace == wish.colorSpace;
    });
    if (found) return wish;
  }
  return std::nullopt;
}

// Means that the window takes the size of its swapchain.
constexpr std::uint32_t noSizeOfItsOwn = std::numeric_limits<std::uint32_t>::max();

SwapchainOwner makeSwapchain(const VulkanContext& context, const VulkanSwapchain::Settings& settings) {
  auto info = typed<VkSwapchainCreateInfoKHR>(VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR);
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
  return created<SwapchainOwner>(vkCreateSwapchainKHR, context.device(), info, "vkCreateSwapchainKHR");
}

std::vector<VkImage> swapchainImages(const VulkanContext& context, VkSwapchainKHR swapchain) {
  std::uint32_t count = 0;
  check(vkGetSwapchainImagesKHR(context.device(), swapchain, &count, nullptr), "vkGetSwapchainImagesKHR");
  std::vector<VkImage> images(count);
  check(vkGetSwapchainImagesKHR(context.device(), swapchain, &count, images.data()), "vkGetSwapchainImagesKHR");
  return images;
}

}  // namespace

std::optional<VkSurfaceFormatKHR> chooseSurfaceFormat(std::span<const VkSurfaceFormatKHR> offered, PixelFormat wanted,
                                                      bool extendedAllowed) {
  if (wanted == PixelFormat::rgba16Float && extendedAllowed) {
    if (const auto extended = firstOffered(offered, extendedFormats)) return extended;
  }
  return firstOffered(offered, plainFormats);
}

VkCompositeAlphaFlagBitsKHR chooseCompositeAlpha(VkCompositeAlphaFlagsKHR offered) {
  for (const auto wish : {VK_COMPOSITE_ALPHA_PRE_MULTIPLIED_BIT_KHR, VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR,
                          VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR, VK_COMPOSITE_ALPHA_POST_MULTIPLIED_BIT_KHR}) {
    if ((offered & static_cast<VkCompositeAlphaFlagsKHR>(wish)) != 0) return wish;
  }
  return VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
}

VkPresentModeKHR choosePresentMode(std::span<const VkPresentModeKHR> offered) {
  const bool mailbox = std::find(offered.begin(), offered.end(), VK_PRESENT_MODE_MAILBOX_KHR) != offered.end();
  return mailbox ? VK_PRESENT_MODE_MAILBOX_KHR : VK_PRESENT_MODE_FIFO_KHR;
}

std::uint32_t chooseImageCount(const VkSurfaceCapabilitiesKHR& capabilities) {
  const std::uint32_t most = capabilities.maxImageCount == 0 ? noSizeOfItsOwn : capabilities.maxImageCount;
  return std::min(std::max(3U, capabilities.minImageCount), most);
}

Size chooseExtent(const VkSurfaceCapabilitiesKHR& capabilities, Size wanted) {
  const VkExtent2D& own = capabilities.currentExtent;
  if (own.width != noSizeOfItsOwn && own.height != noSizeOfItsOwn) return {own.width, own.height};
  const auto fit = [](std::uint32_t length, std::uint32_t least, std::uint32_t most) {
    return length == 0 ? 0 : std::max(least, std::min(length, most));
  };
  return {fit(wanted.width, capabilities.minImageExtent.width, capabilities.maxImageExtent.width),
          fit(wanted.height, capabilities.minImageExtent.height, capabilities.maxImageExtent.height)};
}

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
  auto barrier = typed<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
  barrier.srcAccessMask = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
  barrier.dstAccessMask = shown ? 0 : VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
  barrier.oldLayout = from;
  barrier.newLayout = to;
  barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
  barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
  barrier.image = texture_.image();
  barrier.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
  // The stage that waits for the acquire semaphore.
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
  // One image can be acquired and all others in flight.
  if (semaphores_.size() > drawables_.size() + 1) return nullptr;
  semaphores_.push_back({device_.context().makeSemaphore()});
  return &semaphores_.back();
}

SwapchainDrawable* VulkanSwapchain::acquire() {
  if (acquired_ != nullptr) return acquired_;
  AcquireSemaphore* entry = freeSemaphore();
  if (entry == nullptr) return nullptr;
  std::uint32_t index = 0;
  const VkResult result = vkAcquireNextImageKHR(device_.context().device(), swapchain_.get(), 0, entry->semaphore.get(),
                                                VK_NULL_HANDLE, &index);
  if (const SwapchainState state = swapchainState(result); state != SwapchainState::busy) state_ = state;
  if (result != VK_SUCCESS && result != VK_SUBOPTIMAL_KHR) return nullptr;
  entry->inUse = true;
  acquired_ = drawables_[index].get();
  acquired_->acquired(entry->semaphore.get());
  return acquired_;
}

void VulkanSwapchain::waited(VkSemaphore semaphore, std::uint64_t number) {
  const auto found = std::find_if(semaphores_.begin(), semaphores_.end(),
                                  [&](const AcquireSemaphore& entry) { return entry.semaphore.get() == semaphore; });
  if (found == semaphores_.end()) return;
  found->inUse = false;
  found->waitedBy = number;
}

void VulkanSwapchain::present(SwapchainDrawable& drawable) {
  acquired_ = nullptr;
  const VkSwapchainKHR swapchain = swapchain_.get();
  const VkSemaphore wait = drawable.presentSemaphore();
  const std::uint32_t index = drawable.index();
  auto info = typed<VkPresentInfoKHR>(VK_STRUCTURE_TYPE_PRESENT_INFO_KHR);
  info.waitSemaphoreCount = 1;
  info.pWaitSemaphores = &wait;
  info.swapchainCount = 1;
  info.pSwapchains = &swapchain;
  info.pImageIndices = &index;
  state_ = swapchainState(vkQueuePresentKHR(device_.context().queue(), &info));
  if (state_ == SwapchainState::deviceLost) device_.context().markLost();
}

}  // namespace veloria::gpu::vulkan
