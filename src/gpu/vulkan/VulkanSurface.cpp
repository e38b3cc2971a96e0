#include "gpu/vulkan/VulkanSurface.h"

#include <algorithm>
#include <utility>

#include "base/Log.h"
#include "gpu/vulkan/SurfaceChoice.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFormat.h"
#include "gpu/vulkan/VulkanSwapchain.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::chrono::milliseconds firstPause{50};
constexpr std::chrono::seconds longestPause{1};
constexpr std::chrono::milliseconds sizeCheckPause{100};

// How many later submissions an old swapchain is kept for: nothing tells when its last image has left the screen's
// queue, but work that was submitted well after that can't have overtaken it.
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

// A window may get its new size later than the surface, and not every driver tells.
void VulkanSurface::followLateWindow() {
  if (swapchain_->shape().extent == size_ || swapchain_->hasTaken()) return;
  const auto now = RetryPause::Clock::now();
  if (now - sizeChecked_ < sizeCheckPause) return;
  sizeChecked_ = now;
  stale_ = queryShape() != swapchain_->shape();
}

// Does what the swapchain's last answer asks for.
void VulkanSurface::react() {
  if (!swapchain_) return;
  switch (swapchain_->state()) {
    case SwapchainState::good:
    case SwapchainState::busy:
      return;
    case SwapchainState::suboptimal:
      stale_ = stale_ || (!swapchain_->hasTaken() && worthRebuilding());
      return;
    case SwapchainState::outdated:
      stale_ = stale_ || !swapchain_->hasTaken();
      return;
    case SwapchainState::surfaceLost:
      dropSurface();
      return;
    case SwapchainState::deviceLost:
      device_.context().markLost();
      return;
  }
}

// Some drivers call a swapchain suboptimal for as long as it lives, whatever is put in its place.
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

}  // namespace veloria::gpu::vulkan
