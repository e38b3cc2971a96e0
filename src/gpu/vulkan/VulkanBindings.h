#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstdint>
#include <vector>

#include "gpu/CommandBuffer.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanPipeline.h"

namespace veloria::gpu::vulkan {

class VulkanTexture;

using BoundTextures = std::array<const VulkanTexture*, maxTextureIndex + 1>;

/// The descriptor sets of one command buffer. A set is made when a pass first binds a combination of textures, and
/// used again by later passes and, until a texture is released, by later frames.
class VulkanBindings {
 public:
  explicit VulkanBindings(const VulkanContext& context) : context_(context) {}

  /// The command buffer starts anew. `texturesReleased` counts the device's textures that are gone: their sets must go.
  void begin(std::uint64_t texturesReleased);
  /// Throws PreconditionError when a texture is missing or does not fit its binding.
  VkDescriptorSet setFor(const VulkanProgram& program, const BoundTextures& textures);

 private:
  struct Key {
    VkDescriptorSetLayout layout = VK_NULL_HANDLE;
    std::array<std::uint64_t, maxTextureIndex + 1> textures{};
    bool operator==(const Key&) const = default;
  };
  struct Entry {
    Key key;
    VkDescriptorSet set = VK_NULL_HANDLE;
  };
  VkDescriptorSet allocate(VkDescriptorSetLayout layout);
  VkDescriptorSet tryAllocate(VkDescriptorSetLayout layout) const;
  void fill(VkDescriptorSet set, const FunctionBindings& bindings, const BoundTextures& textures) const;

  const VulkanContext& context_;
  std::vector<DescriptorPoolOwner> pools_;
  std::size_t pool_ = 0;
  std::vector<Entry> entries_;
  std::uint64_t texturesReleased_ = 0;
};

}  // namespace veloria::gpu::vulkan
