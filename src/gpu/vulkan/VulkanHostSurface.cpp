#include "gpu/vulkan/VulkanHostSurface.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Log.h"
#include "gpu/vulkan/VulkanDevice.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::size_t drawableCount = 3;

void recordBarrier(VkCommandBuffer commands, VkPipelineStageFlags sourceStages, VkAccessFlags sourceAccess,
                   VkPipelineStageFlags targetStages, VkAccessFlags targetAccess) {
  VkMemoryBarrier barrier{};
  barrier.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
  barrier.srcAccessMask = sourceAccess;
  barrier.dstAccessMask = targetAccess;
  vkCmdPipelineBarrier(commands, sourceStages, targetStages, 0, 1, &barrier, 0, nullptr, 0, nullptr);
}

}  // namespace

HostDrawable::HostDrawable(VulkanDevice& device, const PictureSink& sink, Size size)
    : device_(device),
      sink_(sink),
      texture_(device, {PixelFormat::bgra8Unorm, size, TextureUsage::renderTarget, StorageMode::gpuPrivate, "drawable"},
               this),
      picture_(device.context().makeBuffer(texture_.byteCount(), VK_BUFFER_USAGE_TRANSFER_DST_BIT,
                                           VK_MEMORY_PROPERTY_HOST_CACHED_BIT)) {}

HostDrawable::~HostDrawable() {
  device_.retirement().retire(std::make_shared<VulkanBuffer>(std::move(picture_)));
}

void HostDrawable::recordPresent(VkCommandBuffer commands) {
  state_ = State::presented;
  recordBarrier(commands, VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT, VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT,
                VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_READ_BIT);
  VkBufferImageCopy copy{};
  copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
  copy.imageExtent = {texture_.size().width, texture_.size().height, 1};
  vkCmdCopyImageToBuffer(commands, texture_.image(), VK_IMAGE_LAYOUT_GENERAL, picture_.buffer.get(), 1, &copy);
  recordBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_WRITE_BIT,
                VK_PIPELINE_STAGE_HOST_BIT | VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT, VK_ACCESS_HOST_READ_BIT);
}

void HostDrawable::completed(bool failed) noexcept {
  if (!failed) sink_(picture_.bytes.first(texture_.byteCount()), texture_.size());
  state_ = State::free;
}

VulkanHostSurface::VulkanHostSurface(VulkanDevice& device, PictureSink sink)
    : device_(device), sink_(std::move(sink)) {}

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
  if (HostDrawable* taken = find(HostDrawable::State::taken)) return taken;
  HostDrawable* free = find(HostDrawable::State::free);
  if (free != nullptr) free->take();
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
    drawables_.push_back(std::make_unique<HostDrawable>(device_, sink_, size_));
  }
  stale_ = false;
} catch (const DeviceError& error) {
  NimbraLog::debugf("gpu: no drawables: %s", error.what());
}

}  // namespace veloria::gpu::vulkan
