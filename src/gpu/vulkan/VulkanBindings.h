#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "gpu/Frame.h"
#include "gpu/vulkan/VulkanContext.h"

namespace veloria::gpu::vulkan {

/// The one layout of all pipelines: the bindings of gpu/Frame.h.
class VulkanLayout {
 public:
  explicit VulkanLayout(const VulkanContext& context);

  VkDescriptorSetLayout textures() const { return textures_.get(); }
  VkDescriptorSetLayout bytes() const { return bytes_.get(); }
  VkPipelineLayout pipeline() const { return pipeline_.get(); }

 private:
  SamplerOwner sampler_;
  DescriptorSetLayoutOwner textures_;
  DescriptorSetLayoutOwner bytes_;
  PipelineLayoutOwner pipeline_;
};

/// The descriptor sets of one frame. A set is made when a pass first binds a combination of textures, and used again by
/// later passes and, until a texture is released, by later frames.
class VulkanTextureSets {
 public:
  VulkanTextureSets(const VulkanContext& context, const VulkanLayout& layout) : context_(context), layout_(layout) {}

  /// Starts the frame again. `texturesReleased` counts the device's released textures; when it has grown, old sets are
  /// freed.
  void begin(std::uint64_t texturesReleased);
  VkDescriptorSet setFor(const Pass& pass);

 private:
  static constexpr std::size_t bindingCount = maxTextures + maxImages + 1;
  using Ids = std::array<std::uint64_t, bindingCount>;  // of the textures by binding; 0 for none
  struct Entry {
    Ids ids{};
    VkDescriptorSet set = VK_NULL_HANDLE;
  };
  static std::array<const Texture*, bindingCount> texturesOf(const Pass& pass);
  VkDescriptorSet allocate();
  VkDescriptorSet tryAllocate() const;
  void fill(VkDescriptorSet set, std::span<const Texture* const> textures) const;

  const VulkanContext& context_;
  const VulkanLayout& layout_;
  std::vector<DescriptorPoolOwner> pools_;
  std::size_t pool_ = 0;
  std::vector<Entry> entries_;
  std::uint64_t texturesReleased_ = 0;
};

/// Where a copy of a pass's bytes lies: the set to bind and its dynamic offset.
struct UniformSlice {
  VkDescriptorSet set = VK_NULL_HANDLE;
  std::uint32_t offset = 0;
};

/// The passes' bytes of one frame: blocks of mapped memory that are filled from the start again each time the frame is
/// used. Grows to what the busiest frame needed.
class VulkanUniforms {
 public:
  VulkanUniforms(const VulkanContext& context, const VulkanLayout& layout) : context_(context), layout_(layout) {}

  UniformSlice push(std::span<const std::byte> bytes);
  void rewind();

 private:
  struct Block {
    VulkanBuffer buffer;
    DescriptorPoolOwner pool;
    VkDescriptorSet set = VK_NULL_HANDLE;
  };
  Block makeBlock() const;

  const VulkanContext& context_;
  const VulkanLayout& layout_;
  std::vector<Block> blocks_;
  std::size_t block_ = 0;
  VkDeviceSize offset_ = 0;
};

}  // namespace veloria::gpu::vulkan
