#include "gpu/vulkan/VulkanHazards.h"

#include "gpu/vulkan/VulkanInstance.h"

namespace veloria::gpu::vulkan {

namespace {

struct AccessTraits {
  VkPipelineStageFlags stage;
  VkAccessFlags access;
  bool writes;
};

// A colour target is cleared or loaded, hence its read bit.
constexpr std::array<AccessTraits, accessCount> traits{{
    {VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT, VK_ACCESS_SHADER_READ_BIT, false},
    {VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT, VK_ACCESS_SHADER_WRITE_BIT, true},
    {VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT, VK_ACCESS_SHADER_READ_BIT, false},
    {VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT,
     VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | VK_ACCESS_COLOR_ATTACHMENT_READ_BIT, true},
}};

constexpr std::size_t indexOf(Access access) {
  return static_cast<std::size_t>(access);
}

}  // namespace

void PassBarrier::record(VkCommandBuffer commands) const {
  auto memory = typed<VkMemoryBarrier>(VK_STRUCTURE_TYPE_MEMORY_BARRIER);
  memory.srcAccessMask = sourceAccess;
  memory.dstAccessMask = targetAccess;
  vkCmdPipelineBarrier(commands, sourceStages, targetStages, 0, 1, &memory, 0, nullptr, 0, nullptr);
}

void VulkanHazards::beginPass(std::uint64_t number) {
  pass_ = number;
  sources_ = 0;
  targets_ = 0;
}

void VulkanHazards::touch(const TextureAccesses& texture, Access access) {
  const std::size_t target = indexOf(access);
  for (std::size_t source = 0; source < accessCount; ++source) {
    if (!traits[source].writes && !traits[target].writes) continue;
    if (texture.lastPass[source] <= waitedUpTo_[source][target]) continue;
    sources_ |= 1U << source;
    targets_ |= 1U << target;
  }
}

PassBarrier VulkanHazards::endPass() {
  PassBarrier barrier;
  for (std::size_t index = 0; index < accessCount; ++index) {
    if ((sources_ >> index & 1U) != 0) {
      barrier.sourceStages |= traits[index].stage;
      if (traits[index].writes) barrier.sourceAccess |= traits[index].access;
    }
    if ((targets_ >> index & 1U) != 0) {
      barrier.targetStages |= traits[index].stage;
      barrier.targetAccess |= traits[index].access;
    }
  }
  for (std::size_t source = 0; source < accessCount; ++source) {
    for (std::size_t target = 0; target < accessCount; ++target) {
      const bool covered = (sources_ >> source & 1U) != 0 && (targets_ >> target & 1U) != 0;
      if (covered) waitedUpTo_[source][target] = pass_ - 1;
    }
  }
  return barrier;
}

void VulkanHazards::note(TextureAccesses& texture, Access access) const {
  texture.lastPass[indexOf(access)] = pass_;
}

}  // namespace veloria::gpu::vulkan
