#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace veloria::gpu::vulkan {

/// The ways in which a pass touches a texture.
enum class Access : std::uint8_t { computeRead, computeWrite, fragmentRead, colorWrite };
inline constexpr std::size_t accessCount = 4;

/// When a texture was last touched in each way: numbers of passes, 0 for never.
struct TextureAccesses {
  std::array<std::uint64_t, accessCount> lastPass{};
};

/// A barrier over all memory; nothing when both stage masks are 0.
struct PassBarrier {
  VkPipelineStageFlags sourceStages = 0;
  VkPipelineStageFlags targetStages = 0;
  VkAccessFlags sourceAccess = 0;
  VkAccessFlags targetAccess = 0;
  bool needed() const { return sourceStages != 0; }
  void record(VkCommandBuffer commands) const;
};

/// Finds out which barriers the passes of a frame need. Images never change their layout, so one global memory barrier
/// per pass is enough. For each pair of accesses it remembers up to which pass the second has waited for the first; a
/// texture touched later than that is a hazard.
///
/// A value: a frame starts with a copy of the device's and gives it back when it is committed.
class VulkanHazards {
 public:
  /// Starts a pass. `number` grows from pass to pass over all frames.
  void beginPass(std::uint64_t number);
  /// The pass touches the texture; call it for everything that the pass touches, then endPass().
  void touch(const TextureAccesses& texture, Access access);
  /// The barrier to record before the pass.
  PassBarrier endPass();
  /// Notes that the pass has touched the texture. After endPass().
  void note(TextureAccesses& texture, Access access) const;

 private:
  std::uint64_t pass_ = 0;
  std::uint32_t sources_ = 0;  // bits of Access
  std::uint32_t targets_ = 0;
  std::array<std::array<std::uint64_t, accessCount>, accessCount> waitedUpTo_{};  // [source][target]
};

}  // namespace veloria::gpu::vulkan
