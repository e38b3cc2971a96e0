#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstddef>
#include <map>

#include "gpu/Pipeline.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanFunction.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;
class VulkanLibrary;

/// The layouts that pipelines share, made when first wanted: one per combination of kinds of binding, and one render
/// pass per colour format.
class VulkanLayouts {
 public:
  explicit VulkanLayouts(const VulkanContext& context);

  struct Layout {
    DescriptorSetLayoutOwner textures;
    PipelineLayoutOwner pipeline;
  };
  const Layout& layoutFor(const FunctionBindings& bindings);
  VkDescriptorSetLayout bytesLayout() const { return bytes_.get(); }

  /// One colour attachment, cleared and stored, in the general layout before and after.
  VkRenderPass renderPassFor(VkFormat format);

 private:
  using Kinds = std::array<BindingKind, maxTextureIndex + 1>;
  Layout makeLayout(const Kinds& kinds) const;

  const VulkanContext& context_;
  SamplerOwner sampler_;
  DescriptorSetLayoutOwner bytes_;
  std::map<Kinds, Layout> layouts_;
  std::map<VkFormat, RenderPassOwner> renderPasses_;
};

/// What both kinds of pipeline are to an encoder.
struct VulkanProgram {
  const char* name = "";  ///< lives as long as the device
  VkPipelineBindPoint bindPoint = VK_PIPELINE_BIND_POINT_COMPUTE;
  const VulkanLayouts::Layout* layout = nullptr;
  FunctionBindings bindings;
  Size groupSize;
  VkPipeline pipeline = VK_NULL_HANDLE;
};

class VulkanComputePipeline final : public ComputePipeline {
 public:
  VulkanComputePipeline(VulkanDevice& device, const VulkanLibrary& library, const std::string& function);
  ~VulkanComputePipeline() override;
  const VulkanProgram& program() const { return program_; }

 private:
  VulkanDevice& device_;
  VulkanProgram program_;
  PipelineOwner pipeline_;
};

class VulkanRenderPipeline final : public RenderPipeline {
 public:
  VulkanRenderPipeline(VulkanDevice& device, const VulkanLibrary& library, const RenderPipelineDescriptor& descriptor);
  ~VulkanRenderPipeline() override;
  const VulkanProgram& program() const { return program_; }

 private:
  VulkanDevice& device_;
  VulkanProgram program_;
  PipelineOwner pipeline_;
};

}  // namespace veloria::gpu::vulkan
