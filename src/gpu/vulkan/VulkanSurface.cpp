#include "gpu/vulkan/VulkanSurface.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "base/Log.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanSwapchain.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::chrono::milliseconds firstPause{50};
constexpr std::chrono::seconds longestPause{1};
constexpr std::chrono::milliseconds sizeCheckPause{100};

// Later submissions until an old swapchain is freed. Nothing reports when its last image has left the screen's queue,
// but work submitted well after it can't overtake it.
constexpr std::uint64_t submissionsKept = 3;
// A drag of a window's edge makes many swapchains; more than this many old ones are not kept.
constexpr std::size_t maxRetired = 4;

std::vector<VkSurfaceFormatKHR> offeredFormats(VkPhysicalDevice device, VkSurfaceKHR surface) {
  std::uint32_t count = 0;
  if (vkGetPhysicalDeviceSurfaceFormatsKHR(device, surface, &count, nullptr) != VK_SUCCESS) return {};
  std::vector<VkSurfaceFormatKHR> formats(count);
  if (vkGetPhysicalDeviceSurfaceFormatsKHR(device, surface, &count, formats.data()) < VK_SUCCESS) return {};
  formats.resize(count);
  return formats;
}

std::vector<VkPresentModeKHR> offeredModes(VkPhysicalDevice device, VkSurfaceKHR surface) {
  std::uint32_t count = 0;
  if (vkGetPhysicalDeviceSurfacePresentModesKHR(device, surface, &count, nullptr) != VK_SUCCESS) return {};
  std::vector<VkPresentModeKHR> modes(count);
  if (vkGetPhysicalDeviceSurfacePresentModesKHR(device, surface, &count, modes.data()) < VK_SUCCESS) return {};
  modes.resize(count);
  return modes;
}

constexpr std::size_t drawableCount = 3;

}  // namespace

void RetryPause::failed(Clock::time_point now) {
  pause_ =
      pause_ == Clock::duration{} ? Clock::duration(firstPause) : std::min<Clock::duration>(pause_ * 2, longestPause);
  next_ = now + pause_;
}

VulkanSurface::VulkanSurface(VulkanDevice& device, NativeSurfaceFactory makeNative)
    : device_(device), makeNative_(std::move(makeNative)) {}

VulkanSurface::~VulkanSurface() {
  vkQueueWaitIdle(device_.context().queue());
}

void VulkanSurface::configure(Size size, PixelFormat wanted) {
  const bool sizeChanged = size_ != size;
  const bool formatChanged = wanted_ != wanted;
  size_ = size;
  wanted_ = wanted;
  if (sizeChanged) stale_ = true;
  if (formatChanged && surface_) {
    stale_ = true;
    format_ = queryFormat();
  }
  ensureSurface();
}

PixelFormat VulkanSurface::format() const {
  return format_ ? pixelFormat(format_->format) : PixelFormat::invalid;
}

bool VulkanSurface::ensureSurface() {
  if (device_.lost() || !device_.context().limits().swapchains || wanted_ == PixelFormat::invalid) return false;
  if (surface_ && format_) return true;
  const auto now = RetryPause::Clock::now();
  if (!pause_.over(now)) return false;
  if (makeNativeSurface()) return true;
  dropSurface();
  pause_.failed(now);
  return false;
}

bool VulkanSurface::makeNativeSurface() {
  const VulkanContext& context = device_.context();
  surface_ = {context.instance(), makeNative_(context.instance())};
  if (!surface_) return false;
  VkBool32 supported = VK_FALSE;
  const VkResult result =
      vkGetPhysicalDeviceSurfaceSupportKHR(context.physicalDevice(), context.queueFamily(), surface_.get(), &supported);
  if (result != VK_SUCCESS || supported == VK_FALSE) return false;
  format_ = queryFormat();
  return format_.has_value();
}

std::optional<VkSurfaceFormatKHR> VulkanSurface::queryFormat() const {
  return chooseSurfaceFormat(offeredFormats(device_.context().physicalDevice(), surface_.get()), wanted_);
}

Drawable* VulkanSurface::nextDrawable() {
  letRetiredGo();
  // One more round for a swapchain that turns out to be out of date when it is asked.
  for (int round = 0; round < 2; ++round) {
    if (size_.width == 0 || size_.height == 0 || !ensureSurface() || !ensureSwapchain()) return nullptr;
    VulkanDrawable* drawable = swapchain_->acquire();
    if (drawable != nullptr) {
      pause_.succeeded();
      return drawable;
    }
    if (swapchain_->state() == SwapchainState::good) return nullptr;
    react();
  }
  return nullptr;
}

bool VulkanSurface::ensureSwapchain() {
  react();
  if (!surface_) return false;
  if (swapchain_ && !stale_) followLateWindow();
  if (swapchain_ && !stale_) return true;
  const auto now = RetryPause::Clock::now();
  if (!pause_.over(now)) return false;
  if (makeSwapchain()) return true;
  pause_.failed(now);
  return false;
}

// A window may get its new size later than the surface, and not every driver reports that.
void VulkanSurface::followLateWindow() {
  if (swapchain_->shape().extent == size_ || swapchain_->hasAcquired()) return;
  const auto now = RetryPause::Clock::now();
  if (now - sizeChecked_ < sizeCheckPause) return;
  sizeChecked_ = now;
  stale_ = queryShape() != swapchain_->shape();
}

// Acts on the swapchain's last result.
void VulkanSurface::react() {
  if (!swapchain_) return;
  switch (swapchain_->state()) {
    case SwapchainState::good:
    case SwapchainState::busy:
      return;
    case SwapchainState::suboptimal:
      stale_ = stale_ || (!swapchain_->hasAcquired() && worthRebuilding());
      return;
    case SwapchainState::outdated:
      stale_ = stale_ || !swapchain_->hasAcquired();
      return;
    case SwapchainState::surfaceLost:
      dropSurface();
      return;
    case SwapchainState::deviceLost:
      device_.context().markLost();
      return;
  }
}

// Some drivers always report a swapchain as suboptimal, whatever replaces it.
bool VulkanSurface::worthRebuilding() const {
  if (RetryPause::Clock::now() - swapchainMade_ >= longestPause) return true;
  return queryShape() != swapchain_->shape();
}

std::optional<SurfaceShape> VulkanSurface::queryShape() const {
  const VkPhysicalDevice device = device_.context().physicalDevice();
  VkSurfaceCapabilitiesKHR capabilities{};
  if (vkGetPhysicalDeviceSurfaceCapabilitiesKHR(device, surface_.get(), &capabilities) < VK_SUCCESS)
    return std::nullopt;
  SurfaceShape shape;
  shape.extent = chooseExtent(capabilities, size_);
  shape.imageCount = chooseImageCount(capabilities);
  shape.presentMode = choosePresentMode(offeredModes(device, surface_.get()));
  shape.compositeAlpha = chooseCompositeAlpha(capabilities.supportedCompositeAlpha);
  shape.transform = capabilities.currentTransform;
  return shape;
}

bool VulkanSurface::makeSwapchain() {
  const std::optional<SurfaceShape> shape = queryShape();
  if (!shape) {
    dropSurface();
    return false;
  }
  if (shape->extent.width == 0 || shape->extent.height == 0) return false;
  VulkanSwapchain::Settings settings;
  settings.surface = surface_.get();
  settings.format = *format_;
  settings.shape = *shape;
  settings.old = swapchain_ ? swapchain_->get() : VK_NULL_HANDLE;
  try {
    auto fresh = std::make_unique<VulkanSwapchain>(device_, settings);
    retireSwapchain();
    swapchain_ = std::move(fresh);
    swapchainMade_ = RetryPause::Clock::now();
    stale_ = false;
    return true;
  } catch (const DeviceError& error) {
    NimbraLog::debugf("gpu: no swapchain: %s", error.what());
    dropSurface();
    return false;
  }
}

void VulkanSurface::retireSwapchain() {
  if (!swapchain_) return;
  retired_.push_back({std::move(swapchain_), device_.timeline().submitted() + submissionsKept});
  if (retired_.size() <= maxRetired) return;
  vkQueueWaitIdle(device_.context().queue());
  retired_.erase(retired_.begin());
}

void VulkanSurface::letRetiredGo() {
  if (retired_.empty()) return;
  const std::uint64_t completed = device_.timeline().completed();
  std::erase_if(retired_, [&](const Retired& old) { return old.after <= completed; });
}

void VulkanSurface::dropSurface() {
  if (swapchain_ || !retired_.empty()) vkQueueWaitIdle(device_.context().queue());
  retired_.clear();
  swapchain_.reset();
  surface_.reset();
  format_.reset();
}

HostDrawable::HostDrawable(VulkanDevice& device, PictureBuffers& buffers, Size size)
    : device_(device),
      buffers_(buffers),
      texture_(device, {PixelFormat::bgra8Unorm, size, TextureUsage::renderTarget, StorageMode::gpuPrivate, "drawable"},
               this),
      picture_(device.context().makeBuffer(texture_.byteCount(), VK_BUFFER_USAGE_TRANSFER_DST_BIT,
                                           VK_MEMORY_PROPERTY_HOST_CACHED_BIT)) {}

HostDrawable::~HostDrawable() {
  if (state_ == State::acquired) buffers_.giveBack(*shown_);
  device_.retirement().retire(std::make_shared<VulkanBuffer>(std::move(picture_)));
}

void HostDrawable::acquire(PictureBuffer& shown) {
  shown_ = &shown;
  state_ = State::acquired;
}

void HostDrawable::recordPresent(VkCommandBuffer commands) {
  state_ = State::presented;
  PassBarrier{VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT, VK_PIPELINE_STAGE_TRANSFER_BIT,
              VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT, VK_ACCESS_TRANSFER_READ_BIT}
      .record(commands);
  VkBufferImageCopy copy{};
  copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
  copy.imageExtent = {texture_.size().width, texture_.size().height, 1};
  vkCmdCopyImageToBuffer(commands, texture_.image(), VK_IMAGE_LAYOUT_GENERAL, picture_.buffer.get(), 1, &copy);
  PassBarrier{VK_PIPELINE_STAGE_TRANSFER_BIT,
              VK_PIPELINE_STAGE_HOST_BIT | VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT, VK_ACCESS_TRANSFER_WRITE_BIT,
              VK_ACCESS_HOST_READ_BIT}
      .record(commands);
}

void HostDrawable::completed(bool failed) noexcept {
  if (failed) {
    buffers_.giveBack(*shown_);
  } else {
    const std::size_t row = std::size_t{4} * texture_.size().width;
    for (std::uint32_t y = 0; y < texture_.size().height; ++y) {
      std::memcpy(shown_->pixels + y * shown_->rowBytes, picture_.bytes.data() + y * row, row);
    }
    buffers_.show(*shown_);
  }
  state_ = State::free;
}

VulkanHostSurface::VulkanHostSurface(VulkanDevice& device, std::unique_ptr<PictureBuffers> buffers)
    : device_(device), buffers_(std::move(buffers)) {}

VulkanHostSurface::~VulkanHostSurface() {
  device_.completion().drain();
}

void VulkanHostSurface::configure(Size size, PixelFormat) {
  stale_ = stale_ || size_ != size;
  size_ = size;
}

PixelFormat VulkanHostSurface::format() const {
  return device_.lost() ? PixelFormat::invalid : PixelFormat::bgra8Unorm;
}

Drawable* VulkanHostSurface::nextDrawable() {
  std::erase_if(retired_, [](const auto& old) { return old->state() != HostDrawable::State::presented; });
  if (device_.lost() || size_.width == 0 || size_.height == 0) return nullptr;
  if (stale_) makeDrawables();
  if (HostDrawable* acquired = find(HostDrawable::State::acquired)) return acquired;
  HostDrawable* free = find(HostDrawable::State::free);
  PictureBuffer* shown = free != nullptr && !stale_ ? buffers_->acquire(size_) : nullptr;
  if (shown == nullptr) return nullptr;
  free->acquire(*shown);
  return free;
}

HostDrawable* VulkanHostSurface::find(HostDrawable::State state) const {
  const auto found = std::find_if(drawables_.begin(), drawables_.end(),
                                  [&](const auto& drawable) { return drawable->state() == state; });
  return found == drawables_.end() ? nullptr : found->get();
}

void VulkanHostSurface::makeDrawables() try {
  std::move(drawables_.begin(), drawables_.end(), std::back_inserter(retired_));
  drawables_.clear();
  while (drawables_.size() < drawableCount) {
    drawables_.push_back(std::make_unique<HostDrawable>(device_, *buffers_, size_));
  }
  stale_ = false;
} catch (const DeviceError& error) {
  NimbraLog::debugf("gpu: no drawables: %s", error.what());
}

}  // namespace veloria::gpu::vulkan
