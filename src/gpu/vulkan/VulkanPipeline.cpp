#include "gpu/vulkan/VulkanPipeline.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::size_t maxLibraryBytes = std::size_t{16} << 20;
constexpr std::uint32_t spirvMagic = 0x07230203;
constexpr std::uint32_t headerWords = 5;
constexpr std::uint32_t newestVersion = 0x00010500;  // what Vulkan 1.2 takes
constexpr std::uint32_t entryPointInstruction = 15;

[[noreturn]] void refuse(const std::string& text) {
  throw DeviceError("the shader library is not usable: " + text);
}

std::vector<std::uint32_t> toWords(std::span<const std::byte> bytes) {
  if (bytes.size() > maxLibraryBytes) throw DeviceError("the shader library is above 16 MiB");
  if (bytes.empty() || bytes.size() % sizeof(std::uint32_t) != 0) refuse("not a whole number of SPIR-V words");
  std::vector<std::uint32_t> words(bytes.size() / sizeof(std::uint32_t));
  std::memcpy(words.data(), bytes.data(), bytes.size());
  return words;
}

VkShaderStageFlagBits stageOf(std::uint32_t executionModel) {
  switch (executionModel) {
    case 0:
      return VK_SHADER_STAGE_VERTEX_BIT;
    case 4:
      return VK_SHADER_STAGE_FRAGMENT_BIT;
    case 5:
      return VK_SHADER_STAGE_COMPUTE_BIT;
    default:
      refuse("a function of another stage than compute, vertex and fragment");
  }
}

std::string literalString(std::span<const std::uint32_t> words) {
  const std::string_view bytes(reinterpret_cast<const char*>(words.data()), words.size_bytes());
  const std::size_t end = bytes.find('\0');
  if (end == std::string_view::npos) refuse("a name without an end");
  return std::string(bytes.substr(0, end));
}

// The functions by name. Refuses words that are not a whole module in this machine's byte order: magic, version, every
// instruction inside the words, every name ended, no name twice.
std::map<std::string, VkShaderStageFlagBits> findFunctions(std::span<const std::uint32_t> words) {
  if (words.size() < headerWords || words[0] != spirvMagic) refuse("not SPIR-V");
  if (words[1] > newestVersion) refuse("a newer SPIR-V than 1.5");
  std::map<std::string, VkShaderStageFlagBits> functions;
  for (std::size_t at = headerWords; at < words.size();) {
    const std::uint32_t length = words[at] >> 16;
    if (length == 0 || length > words.size() - at) refuse("an instruction is cut short");
    const auto instruction = words.subspan(at, length);
    at += length;
    if ((instruction[0] & 0xFFFF) != entryPointInstruction) continue;
    if (length < 4) refuse("a function without a name");
    const std::string name = literalString(instruction.subspan(3));
    if (!functions.emplace(name, stageOf(instruction[1])).second) refuse("two functions are called \"" + name + "\"");
  }
  if (functions.empty()) refuse("it has no function");
  return functions;
}

ShaderModuleOwner makeModule(const VulkanContext& context, const std::vector<std::uint32_t>& words) {
  VkShaderModuleCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
  info.codeSize = words.size() * sizeof(std::uint32_t);
  info.pCode = words.data();
  VkShaderModule module = VK_NULL_HANDLE;
  check(vkCreateShaderModule(context.device(), &info, nullptr, &module), "vkCreateShaderModule");
  return {context.device(), module};
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
  library.requireStage(function, which);
  VkPipelineShaderStageCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
  info.stage = which;
  info.module = library.module();
  info.pName = function.c_str();
  info.pSpecializationInfo = specialization.info();
  return info;
}

PipelineOwner makeComputePipeline(VulkanDevice& device, const VulkanLibrary& library,
                                  const PipelineDescriptor& descriptor) {
  const Specialization specialization(device.context().limits().groupSize, TargetKind::light, descriptor.variant);
  VkComputePipelineCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_COMPUTE_PIPELINE_CREATE_INFO;
  info.stage = stage(VK_SHADER_STAGE_COMPUTE_BIT, library, descriptor.function, specialization);
  info.layout = device.layout().pipeline();
  VkPipeline pipeline = VK_NULL_HANDLE;
  check(vkCreateComputePipelines(device.context().device(), device.pipelineCache(), 1, &info, nullptr, &pipeline),
        ("making compute pipeline " + descriptor.function).c_str());
  return {device.context().device(), pipeline};
}

PipelineOwner makeRenderPipeline(VulkanDevice& device, const VulkanLibrary& library,
                                 const PipelineDescriptor& descriptor) {
  const Specialization specialization(device.context().limits().groupSize, targetKind(descriptor.format),
                                      descriptor.variant);
  const std::array stages{stage(VK_SHADER_STAGE_VERTEX_BIT, library, descriptor.vertexFunction, specialization),
                          stage(VK_SHADER_STAGE_FRAGMENT_BIT, library, descriptor.function, specialization)};
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
  info.layout = device.layout().pipeline();
  info.renderPass = device.renderPassFor(descriptor.format);
  VkPipeline pipeline = VK_NULL_HANDLE;
  check(vkCreateGraphicsPipelines(device.context().device(), device.pipelineCache(), 1, &info, nullptr, &pipeline),
        ("making render pipeline " + descriptor.function).c_str());
  return {device.context().device(), pipeline};
}

}  // namespace

VulkanLibrary::VulkanLibrary(const VulkanContext& context, std::span<const std::byte> bytes)
    : VulkanLibrary(context, toWords(bytes)) {}

VulkanLibrary::VulkanLibrary(const VulkanContext& context, const std::vector<std::uint32_t>& words)
    : functions_(findFunctions(words)), module_(makeModule(context, words)) {}

void VulkanLibrary::requireStage(const std::string& function, VkShaderStageFlagBits stage) const {
  if (functions_.at(function) == stage) return;
  throw DeviceError("function " + function + " is of another stage than asked for");
}

VulkanPipeline::VulkanPipeline(VulkanDevice& device, const VulkanLibrary& library, const PipelineDescriptor& descriptor)
    : Pipeline(descriptor),
      device_(device),
      name_(device.intern(descriptor.function)),
      pipeline_(draws() ? makeRenderPipeline(device, library, descriptor)
                        : makeComputePipeline(device, library, descriptor)) {
  device.context().setName(VK_OBJECT_TYPE_PIPELINE, reinterpret_cast<std::uint64_t>(get()), descriptor.function);
}

VulkanPipeline::~VulkanPipeline() {
  device_.retirement().retire(std::make_shared<PipelineOwner>(std::move(pipeline_)));
}

}  // namespace veloria::gpu::vulkan
