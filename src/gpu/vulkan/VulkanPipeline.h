#pragma once

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gpu/Pipeline.h"
#include "gpu/vulkan/VulkanContext.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;

/// A SPIR-V module with named functions.
class VulkanLibrary final : public Library {
 public:
  /// Throws DeviceError if the bytes are not a SPIR-V module, are damaged or above 16 MiB.
  VulkanLibrary(const VulkanContext& context, std::span<const std::byte> bytes);

  bool contains(const std::string& function) const override { return functions_.contains(function); }

  VkShaderModule module() const { return module_.get(); }
  /// Throws DeviceError if the function is of another stage.
  void requireStage(const std::string& function, VkShaderStageFlagBits stage) const;

 private:
  VulkanLibrary(const VulkanContext& context, const std::vector<std::uint32_t>& words);

  std::map<std::string, VkShaderStageFlagBits> functions_;
  ShaderModuleOwner module_;
};

class VulkanPipeline final : public Pipeline {
 public:
  VulkanPipeline(VulkanDevice& device, const VulkanLibrary& library, const PipelineDescriptor& descriptor);
  ~VulkanPipeline() override;

  const char* name() const { return name_; }  ///< of its function; lives as long as the device
  VkPipeline get() const { return pipeline_.get(); }
  VkPipelineBindPoint bindPoint() const {
    return draws() ? VK_PIPELINE_BIND_POINT_GRAPHICS : VK_PIPELINE_BIND_POINT_COMPUTE;
  }

 private:
  VulkanDevice& device_;
  const char* name_;
  PipelineOwner pipeline_;
};

/// The content of the file: a header with length and checksum, then the driver's data. Damaged data never reaches a
/// driver.
std::vector<std::byte> packPipelineCache(std::span<const std::byte> data);
/// The driver's data; nothing if `file` did not come from packPipelineCache().
std::optional<std::span<const std::byte>> unpackPipelineCache(std::span<const std::byte> file);

/// Compiled pipelines that outlive the process. If the file can't be read or written, pipelines only compile more
/// slowly.
class VulkanPipelineCache {
 public:
  /// With an empty `path` it reads and writes nothing.
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
