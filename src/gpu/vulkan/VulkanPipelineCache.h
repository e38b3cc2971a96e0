#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "gpu/vulkan/VulkanContext.h"

namespace veloria::gpu::vulkan {

/// What is kept in the file: the driver's data behind a head with its length and a checksum, so that no damaged data
/// ever reaches a driver.
std::vector<std::byte> packPipelineCache(std::span<const std::byte> data);
/// The driver's data; nothing when `file` is not what packPipelineCache() makes.
std::optional<std::span<const std::byte>> unpackPipelineCache(std::span<const std::byte> file);

/// Compiled pipelines that outlive the process. Failing to read or write the file is no error, only slower.
class VulkanPipelineCache {
 public:
  /// Nothing is read or written when `path` is empty.
  VulkanPipelineCache(const VulkanContext& context, std::filesystem::path path);
  ~VulkanPipelineCache();
  VulkanPipelineCache(const VulkanPipelineCache&) = delete;
  VulkanPipelineCache& operator=(const VulkanPipelineCache&) = delete;

  VkPipelineCache get() const { return cache_.get(); }
  /// Writes the file (beside it first, then renamed) if the content has changed.
  void save() noexcept;

 private:
  std::vector<std::byte> data() const;

  const VulkanContext& context_;
  std::filesystem::path path_;
  PipelineCacheOwner cache_;
  std::vector<std::byte> saved_;
};

}  // namespace veloria::gpu::vulkan
