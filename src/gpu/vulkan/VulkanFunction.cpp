#include "gpu/vulkan/VulkanFunction.h"

#include <spirv_cross/spirv_cross_c.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace veloria::gpu::vulkan {

namespace {

constexpr std::uint32_t headerWords = 5;
constexpr std::uint32_t newestVersion = 0x00010500;  // what Vulkan 1.2 takes
constexpr std::uint32_t entryPointInstruction = 15;

constexpr std::uint32_t texturesSet = 0;
constexpr std::uint32_t bytesSet = 1;

[[noreturn]] void refuse(const std::string& text) {
  throw DeviceError("the shader library is not usable: " + text);
}

std::optional<VkShaderStageFlagBits> stageOf(std::uint32_t executionModel) {
  switch (executionModel) {
    case SpvExecutionModelVertex:
      return VK_SHADER_STAGE_VERTEX_BIT;
    case SpvExecutionModelFragment:
      return VK_SHADER_STAGE_FRAGMENT_BIT;
    case SpvExecutionModelGLCompute:
      return VK_SHADER_STAGE_COMPUTE_BIT;
    default:
      return std::nullopt;
  }
}

SpvExecutionModel executionModel(VkShaderStageFlagBits stage) {
  if (stage == VK_SHADER_STAGE_VERTEX_BIT) return SpvExecutionModelVertex;
  if (stage == VK_SHADER_STAGE_FRAGMENT_BIT) return SpvExecutionModelFragment;
  return SpvExecutionModelGLCompute;
}

std::string literalString(std::span<const std::uint32_t> words) {
  const std::string_view bytes(reinterpret_cast<const char*>(words.data()), words.size_bytes());
  const std::size_t end = bytes.find('\0');
  if (end == std::string_view::npos) refuse("a name without an end");
  return std::string(bytes.substr(0, end));
}

PixelFormat storageFormat(SpvImageFormat format) {
  switch (format) {
    case SpvImageFormatR16f:
      return PixelFormat::r16Float;
    case SpvImageFormatRg16f:
      return PixelFormat::rg16Float;
    case SpvImageFormatRgba16f:
      return PixelFormat::rgba16Float;
    case SpvImageFormatRgba8:
      return PixelFormat::rgba8Unorm;
    default:
      return PixelFormat::invalid;
  }
}

// Walks over what one function uses.
class Describer {
 public:
  Describer(spvc_context context, spvc_compiler compiler, const std::string& name)
      : context_(context), compiler_(compiler), name_(name) {}

  FunctionInfo describe(VkShaderStageFlagBits stage) {
    selectFunction(stage);
    addTextures(SPVC_RESOURCE_TYPE_SAMPLED_IMAGE, BindingKind::sampled);
    addTextures(SPVC_RESOURCE_TYPE_STORAGE_IMAGE, BindingKind::storage);
    addBlock();
    for (const auto type :
         {SPVC_RESOURCE_TYPE_STORAGE_BUFFER, SPVC_RESOURCE_TYPE_PUSH_CONSTANT, SPVC_RESOURCE_TYPE_SEPARATE_IMAGE,
          SPVC_RESOURCE_TYPE_SEPARATE_SAMPLERS, SPVC_RESOURCE_TYPE_SUBPASS_INPUT}) {
      if (!resources(type).empty()) fail("binds something that is neither a texture nor the uniform block");
    }
    if (stage == VK_SHADER_STAGE_COMPUTE_BIT) readGroupSize();
    if (stage != VK_SHADER_STAGE_COMPUTE_BIT) requireNoWrites();
    return info_;
  }

 private:
  [[noreturn]] void fail(const std::string& text) const { throw DeviceError("function " + name_ + " " + text); }

  void ask(spvc_result result) const {
    if (result != SPVC_SUCCESS) fail(std::string("can't be read: ") + spvc_context_get_last_error_string(context_));
  }

  void selectFunction(VkShaderStageFlagBits stage) {
    ask(spvc_compiler_set_entry_point(compiler_, name_.c_str(), executionModel(stage)));
    spvc_set used = nullptr;
    ask(spvc_compiler_get_active_interface_variables(compiler_, &used));
    ask(spvc_compiler_create_shader_resources_for_active_variables(compiler_, &resources_, used));
  }

  std::span<const spvc_reflected_resource> resources(spvc_resource_type type) const {
    const spvc_reflected_resource* list = nullptr;
    std::size_t count = 0;
    ask(spvc_resources_get_resource_list_for_type(resources_, type, &list, &count));
    return {list, count};
  }

  std::uint32_t decoration(const spvc_reflected_resource& resource, SpvDecoration which) const {
    return spvc_compiler_get_decoration(compiler_, resource.id, which);
  }

  void addTextures(spvc_resource_type type, BindingKind kind) {
    for (const spvc_reflected_resource& resource : resources(type)) {
      const std::uint32_t index = decoration(resource, SpvDecorationBinding);
      if (decoration(resource, SpvDecorationDescriptorSet) != texturesSet || index > maxTextureIndex) {
        fail("binds a texture elsewhere than at set 0, binding 0 to 3");
      }
      const spvc_type imageType = spvc_compiler_get_type_handle(compiler_, resource.type_id);
      if (spvc_type_get_num_array_dimensions(imageType) != 0) fail("binds an array of textures");
      TextureBinding& binding = info_.bindings.textures[index];
      if (binding.kind != BindingKind::none) fail("binds two textures at one index");
      binding.kind = kind;
      const bool storage = kind == BindingKind::storage;
      binding.reads = spvc_compiler_has_decoration(compiler_, resource.id, SpvDecorationNonReadable) == SPVC_FALSE;
      binding.writes =
          storage && spvc_compiler_has_decoration(compiler_, resource.id, SpvDecorationNonWritable) == SPVC_FALSE;
      if (storage) binding.format = storageFormat(spvc_type_get_image_storage_format(imageType));
    }
  }

  void addBlock() {
    const auto blocks = resources(SPVC_RESOURCE_TYPE_UNIFORM_BUFFER);
    if (blocks.empty()) return;
    const spvc_reflected_resource& block = blocks.front();
    const bool inPlace =
        decoration(block, SpvDecorationDescriptorSet) == bytesSet && decoration(block, SpvDecorationBinding) == 0;
    if (blocks.size() > 1 || !inPlace) fail("binds a uniform block elsewhere than at set 1, binding 0");
    std::size_t size = 0;
    const spvc_type type = spvc_compiler_get_type_handle(compiler_, block.base_type_id);
    ask(spvc_compiler_get_declared_struct_size(compiler_, type, &size));
    if (size > maxInlineBytes) fail("has a uniform block above 4096 bytes");
    info_.bindings.blockSize = static_cast<std::uint32_t>(size);
  }

  void readGroupSize() {
    spvc_specialization_constant x{};
    spvc_specialization_constant y{};
    spvc_specialization_constant z{};
    spvc_compiler_get_work_group_size_specialization_constants(compiler_, &x, &y, &z);
    const auto fixed = [&](const spvc_specialization_constant& constant, std::uint32_t id, std::uint32_t dimension) {
      if (constant.id != 0 && constant.constant_id == id) return 0U;
      return spvc_compiler_get_execution_mode_argument_by_index(compiler_, SpvExecutionModeLocalSize, dimension);
    };
    info_.fixedGroupSize = {fixed(x, 0, 0), fixed(y, 1, 1)};
  }

  // Writing from here needs features that this back end does not ask the device for.
  void requireNoWrites() const {
    for (const TextureBinding& binding : info_.bindings.textures) {
      if (binding.writes) fail("writes a texture, which only compute functions can");
    }
  }

  spvc_context context_;
  spvc_compiler compiler_;
  const std::string& name_;
  spvc_resources resources_ = nullptr;
  FunctionInfo info_;
};

}  // namespace

std::map<std::string, VkShaderStageFlagBits> findFunctions(std::span<const std::uint32_t> words) {
  if (words.size() < headerWords || words[0] != SpvMagicNumber) refuse("not SPIR-V");
  if (words[1] > newestVersion) refuse("a newer SPIR-V than 1.5");
  std::map<std::string, VkShaderStageFlagBits> functions;
  for (std::size_t at = headerWords; at < words.size();) {
    const std::uint32_t length = words[at] >> 16;
    if (length == 0 || length > words.size() - at) refuse("an instruction is cut short");
    const auto instruction = words.subspan(at, length);
    at += length;
    if ((instruction[0] & 0xFFFF) != entryPointInstruction) continue;
    if (length < 4) refuse("a function without a name");
    const auto stage = stageOf(instruction[1]);
    if (!stage) refuse("a function of another stage than compute, vertex and fragment");
    const std::string name = literalString(instruction.subspan(3));
    if (!functions.emplace(name, *stage).second) refuse("two functions are called \"" + name + "\"");
  }
  if (functions.empty()) refuse("it has no function");
  return functions;
}

FunctionBindings mergeBindings(const FunctionBindings& a, const FunctionBindings& b, const std::string& name) {
  FunctionBindings merged = a;
  for (std::size_t index = 0; index < merged.textures.size(); ++index) {
    const TextureBinding& other = b.textures[index];
    TextureBinding& mine = merged.textures[index];
    if (other.kind == BindingKind::none) continue;
    if (mine.kind != BindingKind::none && mine.kind != other.kind) {
      throw DeviceError("the functions of " + name + " bind texture " + std::to_string(index) + " in two ways");
    }
    mine = other;
  }
  merged.blockSize = std::max(a.blockSize, b.blockSize);
  return merged;
}

void FunctionReflection::ContextDeleter::operator()(spvc_context_s* context) const {
  spvc_context_destroy(context);
}

FunctionReflection::FunctionReflection(std::span<const std::uint32_t> words) {
  spvc_context context = nullptr;
  if (spvc_context_create(&context) != SPVC_SUCCESS) refuse("out of memory");
  context_.reset(context);
  spvc_parsed_ir module = nullptr;
  if (spvc_context_parse_spirv(context, words.data(), words.size(), &module) != SPVC_SUCCESS ||
      spvc_context_create_compiler(context, SPVC_BACKEND_NONE, module, SPVC_CAPTURE_MODE_TAKE_OWNERSHIP, &compiler_) !=
          SPVC_SUCCESS) {
    refuse(spvc_context_get_last_error_string(context));
  }
}

FunctionInfo FunctionReflection::describe(const std::string& name, VkShaderStageFlagBits stage) const {
  return Describer(context_.get(), compiler_, name).describe(stage);
}

}  // namespace veloria::gpu::vulkan
