#pragma once

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <cstdint>
#include <map>
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
  /// Throws DeviceError when the bytes are no SPIR-V module, damaged or above 16 MiB.
  VulkanLibrary(const VulkanContext& context, std::span<const std::byte> bytes);

  bool contains(const std::string& function) const override { return functions_.contains(function); }

  VkShaderModule module() const { return module_.get(); }
  /// Throws DeviceError when the function is not of this stage.
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

}  // namespace veloria::gpu::vulkan
