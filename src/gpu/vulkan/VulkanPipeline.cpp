#include "gpu/vulkan/VulkanPipeline.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanFormat.h"
#include "gpu/vulkan/VulkanLibrary.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr VkShaderStageFlags allStages =
    VK_SHADER_STAGE_COMPUTE_BIT | VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT;

SamplerOwner makeSampler(const VulkanContext& context) {
  VkSamplerCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
  info.magFilter = VK_FILTER_LINEAR;
  info.minFilter = VK_FILTER_LINEAR;
  info.mipmapMode = VK_SAMPLER_MIPMAP_MODE_NEAREST;
  info.addressModeU = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
  info.addressModeV = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
  info.addressModeW = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
  VkSampler sampler = VK_NULL_HANDLE;
  check(vkCreateSampler(context.device(), &info, nullptr, &sampler), "vkCreateSampler");
  return {context.device(), sampler};
}

DescriptorSetLayoutOwner makeSetLayout(const VulkanContext& context,
                                       const std::vector<VkDescriptorSetLayoutBinding>& bindings) {
  VkDescriptorSetLayoutCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
  info.bindingCount = static_cast<std::uint32_t>(bindings.size());
  info.pBindings = bindings.data();
  VkDescriptorSetLayout layout = VK_NULL_HANDLE;
  check(vkCreateDescriptorSetLayout(context.device(), &info, nullptr, &layout), "vkCreateDescriptorSetLayout");
  return {context.device(), layout};
}

VkDescriptorSetLayoutBinding binding(std::uint32_t index, VkDescriptorType type, const VkSampler* sampler) {
  VkDescriptorSetLayoutBinding result{};
  result.binding = index;
  result.descriptorType = type;
  result.descriptorCount = 1;
  result.stageFlags = allStages;
  result.pImmutableSamplers = sampler;
  return result;
}

RenderPassOwner makeRenderPass(const VulkanContext& context, VkFormat format) {
  VkAttachmentDescription attachment{};
  attachment.format = format;
  attachment.samples = VK_SAMPLE_COUNT_1_BIT;
  attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
  attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
  attachment.stencilLoadOp = VK_ATTACHMENT_LOAD_OP_DONT_CARE;
  attachment.stencilStoreOp = VK_ATTACHMENT_STORE_OP_DONT_CARE;
  attachment.initialLayout = VK_IMAGE_LAYOUT_GENERAL;
  attachment.finalLayout = VK_IMAGE_LAYOUT_GENERAL;
  VkAttachmentReference reference{0, VK_IMAGE_LAYOUT_GENERAL};
  VkSubpassDescription subpass{};
  subpass.pipelineBindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
  subpass.colorAttachmentCount = 1;
  subpass.pColorAttachments = &reference;
  VkRenderPassCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO;
  info.attachmentCount = 1;
  info.pAttachments = &attachment;
  info.subpassCount = 1;
  info.pSubpasses = &subpass;
  VkRenderPass pass = VK_NULL_HANDLE;
  check(vkCreateRenderPass(context.device(), &info, nullptr, &pass), "vkCreateRenderPass");
  return {context.device(), pass};
}

// The values of the specialisation constants, in the order of their ids.
class Specialization {
 public:
  Specialization(Size groupSize, TargetKind target, std::uint32_t variant)
      : values_{groupSize.width, groupSize.height, static_cast<std::uint32_t>(target), variant} {
    for (std::uint32_t id = 0; id < values_.size(); ++id) {
      entries_[id] = {id, id * static_cast<std::uint32_t>(sizeof(std::uint32_t)), sizeof(std::uint32_t)};
    }
    info_ = {static_cast<std::uint32_t>(entries_.size()), entries_.data(), sizeof values_, values_.data()};
  }
  Specialization(const Specialization&) = delete;
  Specialization& operator=(const Specialization&) = delete;
  const VkSpecializationInfo* info() const { return &info_; }

 private:
  std::array<std::uint32_t, 4> values_;
  std::array<VkSpecializationMapEntry, 4> entries_{};
  VkSpecializationInfo info_{};
};

VkPipelineShaderStageCreateInfo stage(VkShaderStageFlagBits which, const VulkanLibrary& library,
                                      const std::string& function, const Specialization& specialization) {
  VkPipelineShaderStageCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
  info.stage = which;
  info.module = library.module();
  info.pName = function.c_str();
  info.pSpecializationInfo = specialization.info();
  return info;
}

Size groupSizeOf(const FunctionInfo& function, Size wanted) {
  const Size fixed = function.fixedGroupSize;
  return {fixed.width == 0 ? wanted.width : fixed.width, fixed.height == 0 ? wanted.height : fixed.height};
}

PipelineOwner makeComputePipeline(VulkanDevice& device, const VulkanLibrary& library, const std::string& function,
                                  const VulkanProgram& program) {
  const Specialization specialization(device.context().limits().groupSize, TargetKind::light, 0);
  VkComputePipelineCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_COMPUTE_PIPELINE_CREATE_INFO;
  info.stage = stage(VK_SHADER_STAGE_COMPUTE_BIT, library, function, specialization);
  info.layout = program.layout->pipeline.get();
  VkPipeline pipeline = VK_NULL_HANDLE;
  check(vkCreateComputePipelines(device.context().device(), device.pipelineCache(), 1, &info, nullptr, &pipeline),
        ("making compute pipeline " + function).c_str());
  return {device.context().device(), pipeline};
}

PipelineOwner makeRenderPipeline(VulkanDevice& device, const VulkanLibrary& library,
                                 const RenderPipelineDescriptor& descriptor, const VulkanProgram& program) {
  const Specialization specialization(device.context().limits().groupSize, targetKind(descriptor.format),
                                      descriptor.variant);
  const std::array stages{stage(VK_SHADER_STAGE_VERTEX_BIT, library, descriptor.vertexFunction, specialization),
                          stage(VK_SHADER_STAGE_FRAGMENT_BIT, library, descriptor.fragmentFunction, specialization)};
  VkPipelineVertexInputStateCreateInfo input{};
  input.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
  VkPipelineInputAssemblyStateCreateInfo assembly{};
  assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
  assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
  VkPipelineViewportStateCreateInfo viewport{};
  viewport.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
  viewport.viewportCount = 1;
  viewport.scissorCount = 1;
  VkPipelineRasterizationStateCreateInfo raster{};
  raster.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
  raster.polygonMode = VK_POLYGON_MODE_FILL;
  raster.cullMode = VK_CULL_MODE_NONE;
  raster.lineWidth = 1;
  VkPipelineMultisampleStateCreateInfo samples{};
  samples.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
  samples.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
  VkPipelineColorBlendAttachmentState attachment{};
  attachment.colorWriteMask =
      VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT | VK_COLOR_COMPONENT_B_BIT | VK_COLOR_COMPONENT_A_BIT;
  VkPipelineColorBlendStateCreateInfo blend{};
  blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
  blend.attachmentCount = 1;
  blend.pAttachments = &attachment;
  const std::array dynamicStates{VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
  VkPipelineDynamicStateCreateInfo dynamic{};
  dynamic.sType = VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO;
  dynamic.dynamicStateCount = static_cast<std::uint32_t>(dynamicStates.size());
  dynamic.pDynamicStates = dynamicStates.data();

  VkGraphicsPipelineCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
  info.stageCount = static_cast<std::uint32_t>(stages.size());
  info.pStages = stages.data();
  info.pVertexInputState = &input;
  info.pInputAssemblyState = &assembly;
  info.pViewportState = &viewport;
  info.pRasterizationState = &raster;
  info.pMultisampleState = &samples;
  info.pColorBlendState = &blend;
  info.pDynamicState = &dynamic;
  info.layout = program.layout->pipeline.get();
  info.renderPass = device.layouts().renderPassFor(vulkanFormat(descriptor.format));
  VkPipeline pipeline = VK_NULL_HANDLE;
  check(vkCreateGraphicsPipelines(device.context().device(), device.pipelineCache(), 1, &info, nullptr, &pipeline),
        ("making render pipeline " + descriptor.fragmentFunction).c_str());
  return {device.context().device(), pipeline};
}

}  // namespace

VulkanLayouts::VulkanLayouts(const VulkanContext& context)
    : context_(context),
      sampler_(makeSampler(context)),
      bytes_(makeSetLayout(context, {binding(0, VK_DESCRIPTOR_TYPE_UNIFORM_BUFFER_DYNAMIC, nullptr)})) {}

VulkanLayouts::Layout VulkanLayouts::makeLayout(const Kinds& kinds) const {
  const VkSampler sampler = sampler_.get();
  std::vector<VkDescriptorSetLayoutBinding> bindings;
  for (std::uint32_t index = 0; index < kinds.size(); ++index) {
    if (kinds[index] == BindingKind::sampled) {
      bindings.push_back(binding(index, VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, &sampler));
    } else if (kinds[index] == BindingKind::storage) {
      bindings.push_back(binding(index, VK_DESCRIPTOR_TYPE_STORAGE_IMAGE, nullptr));
    }
  }
  Layout layout;
  layout.textures = makeSetLayout(context_, bindings);
  const std::array sets{layout.textures.get(), bytes_.get()};
  VkPipelineLayoutCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
  info.setLayoutCount = static_cast<std::uint32_t>(sets.size());
  info.pSetLayouts = sets.data();
  VkPipelineLayout handle = VK_NULL_HANDLE;
  check(vkCreatePipelineLayout(context_.device(), &info, nullptr, &handle), "vkCreatePipelineLayout");
  layout.pipeline = {context_.device(), handle};
  return layout;
}

const VulkanLayouts::Layout& VulkanLayouts::layoutFor(const FunctionBindings& bindings) {
  Kinds kinds{};
  std::transform(bindings.textures.begin(), bindings.textures.end(), kinds.begin(),
                 [](const TextureBinding& texture) { return texture.kind; });
  const auto found = layouts_.find(kinds);
  if (found != layouts_.end()) return found->second;
  return layouts_.emplace(kinds, makeLayout(kinds)).first->second;
}

VkRenderPass VulkanLayouts::renderPassFor(VkFormat format) {
  RenderPassOwner& pass = renderPasses_[format];
  if (!pass) pass = makeRenderPass(context_, format);
  return pass.get();
}

VulkanComputePipeline::VulkanComputePipeline(VulkanDevice& device, const VulkanLibrary& library,
                                             const std::string& function)
    : ComputePipeline(function), device_(device) {
  const FunctionInfo info = library.describe(function, VK_SHADER_STAGE_COMPUTE_BIT);
  program_.name = device.intern(function);
  program_.bindings = info.bindings;
  program_.layout = &device.layouts().layoutFor(info.bindings);
  program_.groupSize = groupSizeOf(info, device.context().limits().groupSize);
  pipeline_ = makeComputePipeline(device, library, function, program_);
  program_.pipeline = pipeline_.get();
}

VulkanComputePipeline::~VulkanComputePipeline() {
  device_.retirement().retire(std::make_shared<PipelineOwner>(std::move(pipeline_)));
}

VulkanRenderPipeline::VulkanRenderPipeline(VulkanDevice& device, const VulkanLibrary& library,
                                           const RenderPipelineDescriptor& descriptor)
    : RenderPipeline(descriptor), device_(device) {
  const FunctionInfo vertex = library.describe(descriptor.vertexFunction, VK_SHADER_STAGE_VERTEX_BIT);
  const FunctionInfo fragment = library.describe(descriptor.fragmentFunction, VK_SHADER_STAGE_FRAGMENT_BIT);
  program_.name = device.intern(descriptor.fragmentFunction);
  program_.bindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
  program_.bindings = mergeBindings(vertex.bindings, fragment.bindings, descriptor.fragmentFunction);
  program_.layout = &device.layouts().layoutFor(program_.bindings);
  pipeline_ = makeRenderPipeline(device, library, descriptor, program_);
  program_.pipeline = pipeline_.get();
  device.context().setName(VK_OBJECT_TYPE_PIPELINE, reinterpret_cast<std::uint64_t>(program_.pipeline),
                           descriptor.label);
}

VulkanRenderPipeline::~VulkanRenderPipeline() {
  device_.retirement().retire(std::make_shared<PipelineOwner>(std::move(pipeline_)));
}

}  // namespace veloria::gpu::vulkan
