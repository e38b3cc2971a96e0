#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>
#include <vector>

#include "gpu/Frame.h"
#include "gpu/vulkan/VulkanContext.h"

namespace veloria::gpu::vulkan {

/// The times of one frame: its start and end, and with profiling those of every pass.
/// Grows to what the busiest frame needed; passes beyond that are not measured in the frame that first has them.
class VulkanTimestamps {
 public:
  explicit VulkanTimestamps(const VulkanContext& context);

  void begin(VkCommandBuffer commands, bool profiling);
  void beginPass(VkCommandBuffer commands, const char* name);
  void endPass(VkCommandBuffer commands);
  void end(VkCommandBuffer commands);

  /// Reads the times into `completion`, whose passes stay valid until begin(). After the commands have run.
  void resolve(Completion& completion);

 private:
  void makePool(std::uint32_t queries);
  void write(VkCommandBuffer commands, VkPipelineStageFlagBits stage);
  double seconds(std::uint64_t ticks) const;
  void addPass(const char* name, double duration);

  const VulkanContext& context_;
  QueryPoolOwner pool_;
  QueryPoolOwner settling_;  ///< second timestamps, never read
  std::uint32_t capacity_ = 0;
  std::uint32_t used_ = 0;
  std::uint32_t wanted_ = 0;
  bool profiling_ = false;
  bool inPass_ = false;
  std::vector<const char*> names_;
  std::vector<std::uint64_t> ticks_;
  std::vector<PassTime> passes_;
};

}  // namespace veloria::gpu::vulkan
