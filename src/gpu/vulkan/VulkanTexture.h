#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>

#include "gpu/Texture.h"
#include "gpu/Types.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanHazards.h"

namespace veloria::gpu::vulkan {

VkFormat vulkanFormat(PixelFormat format);

/// `invalid` for a format that this interface lacks.
PixelFormat pixelFormat(VkFormat format);

/// The image usage for `usage`, given the format's `features` on the device; always includes copies both ways. A
/// readable texture can also be read through a storage binding if its format allows.
VkImageUsageFlags imageUsage(TextureUsage usage, VkFormatFeatureFlags features);

/// The features that `usage` needs.
VkFormatFeatureFlags neededFeatures(TextureUsage usage);

class VulkanDevice;
class VulkanDrawable;

/// What a texture owns; a swapchain owns its images.
struct TextureResources {
  MemoryOwner memory;
  ImageOwner image;
  ImageViewOwner view;
  FramebufferOwner framebuffer;
  VulkanBuffer staging;  ///< kept by shared textures, which are written often
};

/// A two-dimensional image in the general layout.
class VulkanTexture final : public Texture {
 public:
  /// `drawable`: the drawable that this texture belongs to, if any.
  VulkanTexture(VulkanDevice& device, const TextureDescriptor& descriptor, VulkanDrawable* drawable = nullptr);
  /// The texture of a swapchain image, which can only be drawn into.
  VulkanTexture(VulkanDevice& device, const TextureDescriptor& descriptor, VkImage image, VulkanDrawable& drawable);
  ~VulkanTexture() override;

  std::uint64_t id() const { return id_; }  ///< never used twice on a device
  VkImage image() const { return image_; }
  VkImageView view() const { return resources_.view.get(); }
  VkFramebuffer framebuffer() const { return resources_.framebuffer.get(); }
  VulkanDrawable* drawable() const { return drawable_; }
  TextureAccesses& accesses() const { return accesses_; }

 private:
  void doWrite(std::span<const std::byte> rows) override;
  void doRead(std::span<std::byte> rows) const override;

  void makeImage();
  void makeView();
  void makeFramebuffer();
  void requireOwnImage() const;
  VkBufferImageCopy wholeImage() const;
  /// The buffer that copies go through; waits for the last copy.
  const VulkanBuffer& staging() const;
  void waitForCopy() const;
  void dropStaging() const;

  VulkanDevice& device_;
  std::uint64_t id_;
  VkImage image_ = VK_NULL_HANDLE;
  VulkanDrawable* drawable_ = nullptr;
  mutable TextureResources resources_;
  // Reading passes record their accesses, too.
  mutable TextureAccesses accesses_;
  mutable std::uint64_t lastCopy_ = 0;  // the submission that used the staging buffer last
};

}  // namespace veloria::gpu::vulkan
