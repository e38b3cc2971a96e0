#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>

#include "gpu/Texture.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanHazards.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;
class VulkanDrawable;

/// What a texture is made of; a swapchain's image is the swapchain's own.
struct TextureResources {
  MemoryOwner memory;
  ImageOwner image;
  ImageViewOwner view;
  FramebufferOwner framebuffer;
  VulkanBuffer staging;  ///< kept by shared textures, which are written again and again
};

/// A two-dimensional image in the general layout.
class VulkanTexture final : public Texture {
 public:
  /// `drawable`: whose texture this is, if anyone's.
  VulkanTexture(VulkanDevice& device, const TextureDescriptor& descriptor, VulkanDrawable* drawable = nullptr);
  /// The texture of a swapchain's image, which can only be drawn into.
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
  /// The buffer that copies go through, when the last one is done.
  const VulkanBuffer& staging() const;
  void waitForCopy() const;
  void dropStaging() const;

  VulkanDevice& device_;
  std::uint64_t id_;
  VkImage image_ = VK_NULL_HANDLE;
  VulkanDrawable* drawable_ = nullptr;
  mutable TextureResources resources_;
  // A pass reads a texture and yet has to remember that it did.
  mutable TextureAccesses accesses_;
  mutable std::uint64_t lastCopy_ = 0;  // the submission that used the staging buffer last
};

}  // namespace veloria::gpu::vulkan
