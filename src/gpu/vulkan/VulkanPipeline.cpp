#include "gpu/vulkan/VulkanPipeline.h"

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Log.h"
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
  auto info = typed<VkShaderModuleCreateInfo>(VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO);
  info.codeSize = words.size() * sizeof(std::uint32_t);
  info.pCode = words.data();
  return created<ShaderModuleOwner>(vkCreateShaderModule, context.device(), info, "vkCreateShaderModule");
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
  auto info = typed<VkPipelineShaderStageCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO);
  info.stage = which;
  info.module = library.module();
  info.pName = function.c_str();
  info.pSpecializationInfo = specialization.info();
  return info;
}

PipelineOwner makeComputePipeline(VulkanDevice& device, const VulkanLibrary& library,
                                  const PipelineDescriptor& descriptor) {
  const Specialization specialization(device.context().limits().groupSize, TargetKind::light, descriptor.variant);
  auto info = typed<VkComputePipelineCreateInfo>(VK_STRUCTURE_TYPE_COMPUTE_PIPELINE_CREATE_INFO);
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
  auto input = typed<VkPipelineVertexInputStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO);
  auto assembly =
      typed<VkPipelineInputAssemblyStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO);
  assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
  auto viewport = typed<VkPipelineViewportStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO);
  viewport.viewportCount = 1;
  viewport.scissorCount = 1;
  auto raster =
      typed<VkPipelineRasterizationStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO);
  raster.polygonMode = VK_POLYGON_MODE_FILL;
  raster.cullMode = VK_CULL_MODE_NONE;
  raster.lineWidth = 1;
  auto samples = typed<VkPipelineMultisampleStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO);
  samples.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
  VkPipelineColorBlendAttachmentState attachment{};
  attachment.colorWriteMask =
      VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT | VK_COLOR_COMPONENT_B_BIT | VK_COLOR_COMPONENT_A_BIT;
  auto blend = typed<VkPipelineColorBlendStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO);
  blend.attachmentCount = 1;
  blend.pAttachments = &attachment;
  const std::array dynamicStates{VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
  auto dynamic = typed<VkPipelineDynamicStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO);
  dynamic.dynamicStateCount = static_cast<std::uint32_t>(dynamicStates.size());
  dynamic.pDynamicStates = dynamicStates.data();

  auto info = typed<VkGraphicsPipelineCreateInfo>(VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO);
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

constexpr std::uint64_t maxFileBytes = std::uint64_t{64} << 20;

struct Head {
  char magic[8];
  std::uint64_t length;
  std::uint64_t checksum;
};
static_assert(sizeof(Head) == 24);
constexpr char magic[8] = {'v', 'l', 'p', 'i', 'p', 'e', '0', '1'};

// FNV-1a: http://www.isthe.com/chongo/tech/comp/fnv/
std::uint64_t checksumOf(std::span<const std::byte> data) {
  std::uint64_t hash = 14695981039346656037U;
  for (const std::byte byte : data) hash = (hash ^ static_cast<std::uint64_t>(byte)) * 1099511628211U;
  return hash;
}

std::vector<std::byte> readFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error || size > maxFileBytes || !std::filesystem::is_regular_file(path, error)) return {};
  std::vector<std::byte> bytes(size);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  return file ? bytes : std::vector<std::byte>();
}

bool writeFile(const std::filesystem::path& path, const std::vector<std::byte>& bytes) {
  std::filesystem::path beside = path;
  beside += "." + std::to_string(getpid()) + ".tmp";
  std::error_code error;
  std::filesystem::create_directories(path.parent_path(), error);
  {
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
      std::filesystem::remove(beside, error);
      return false;
    }
  }
  std::filesystem::rename(beside, path, error);
  if (!error) return true;
  std::filesystem::remove(beside, error);
  return false;
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

std::vector<std::byte> packPipelineCache(std::span<const std::byte> data) {
  Head head{};
  std::memcpy(head.magic, magic, sizeof magic);
  head.length = data.size();
  head.checksum = checksumOf(data);
  std::vector<std::byte> file(sizeof head + data.size());
  std::memcpy(file.data(), &head, sizeof head);
  if (!data.empty()) std::memcpy(file.data() + sizeof head, data.data(), data.size());
  return file;
}

std::optional<std::span<const std::byte>> unpackPipelineCache(std::span<const std::byte> file) {
  Head head{};
  if (file.size() < sizeof head) return std::nullopt;
  std::memcpy(&head, file.data(), sizeof head);
  const auto data = file.subspan(sizeof head);
  const bool whole = std::memcmp(head.magic, magic, sizeof magic) == 0 && head.length == data.size();
  if (!whole || head.checksum != checksumOf(data)) return std::nullopt;
  return data;
}

VulkanPipelineCache::VulkanPipelineCache(const VulkanContext& context, std::filesystem::path path)
    : context_(context), path_(std::move(path)) {
  const std::vector<std::byte> file = path_.empty() ? std::vector<std::byte>() : readFile(path_);
  const auto stored = unpackPipelineCache(file);
  auto info = typed<VkPipelineCacheCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_CACHE_CREATE_INFO);
  if (stored) {
    saved_.assign(stored->begin(), stored->end());
    info.initialDataSize = saved_.size();
    info.pInitialData = saved_.data();
  }
  cache_ = created<PipelineCacheOwner>(vkCreatePipelineCache, context.device(), info, "vkCreatePipelineCache");
}

VulkanPipelineCache::~VulkanPipelineCache() {
  save();
}

std::vector<std::byte> VulkanPipelineCache::data() const {
  std::size_t size = 0;
  if (vkGetPipelineCacheData(context_.device(), cache_.get(), &size, nullptr) != VK_SUCCESS) return {};
  std::vector<std::byte> bytes(size);
  if (vkGetPipelineCacheData(context_.device(), cache_.get(), &size, bytes.data()) != VK_SUCCESS) return {};
  bytes.resize(size);
  return bytes;
}

void VulkanPipelineCache::save() noexcept try {
  if (path_.empty() || context_.lost()) return;
  std::vector<std::byte> bytes = data();
  if (bytes.empty() || bytes == saved_) return;
  if (!writeFile(path_, packPipelineCache(bytes))) {
    NimbraLog::debug("gpu: the pipeline cache can't be written to " + path_.string());
    return;
  }
  saved_ = std::move(bytes);
} catch (const std::exception& error) {
  NimbraLog::debugf("gpu: the pipeline cache was not kept: %s", error.what());
}

}  // namespace veloria::gpu::vulkan
