#pragma once

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <map>
#include <span>
#include <string>

#include "gpu/Pipeline.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanFunction.h"

namespace veloria::gpu::vulkan {

/// A SPIR-V module with named functions.
class VulkanLibrary final : public Library {
 public:
  /// Throws DeviceError when the bytes are no SPIR-V module, damaged or above 16 MiB.
  VulkanLibrary(const VulkanContext& context, std::span<const std::byte> bytes);

  bool contains(const std::string& function) const override { return functions_.contains(function); }

  VkShaderModule module() const { return module_.get(); }
  /// Throws DeviceError when the function is not of this stage.
  FunctionInfo describe(const std::string& function, VkShaderStageFlagBits stage) const;

 private:
  VulkanLibrary(const VulkanContext& context, std::vector<std::uint32_t> words);

  std::map<std::string, VkShaderStageFlagBits> functions_;
  FunctionReflection reflection_;
  ShaderModuleOwner module_;
};

}  // namespace veloria::gpu::vulkan
