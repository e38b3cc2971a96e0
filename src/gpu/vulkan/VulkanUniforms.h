#pragma once

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "gpu/vulkan/VulkanContext.h"

namespace veloria::gpu::vulkan {

/// Where a copy of inline bytes lies: the set to bind and its dynamic offset.
struct UniformSlice {
  VkDescriptorSet set = VK_NULL_HANDLE;
  std::uint32_t offset = 0;
};

/// The inline bytes of one command buffer: blocks of mapped memory that are filled from the start again each time the
/// command buffer is used. Grows to what the busiest frame needed and stays so.
class VulkanUniforms {
 public:
  VulkanUniforms(const VulkanContext& context, VkDescriptorSetLayout layout) : context_(context), layout_(layout) {}

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
  VkDescriptorSetLayout layout_;
  std::vector<Block> blocks_;
  std::size_t block_ = 0;
  VkDeviceSize offset_ = 0;
};

}  // namespace veloria::gpu::vulkan
