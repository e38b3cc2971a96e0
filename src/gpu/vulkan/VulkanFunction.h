#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "gpu/CommandBuffer.h"
#include "gpu/Types.h"

struct spvc_context_s;
struct spvc_compiler_s;

namespace veloria::gpu::vulkan {

enum class BindingKind : std::uint8_t { none, sampled, storage };

/// How a function uses the texture of one index.
struct TextureBinding {
  BindingKind kind = BindingKind::none;
  bool reads = false;
  bool writes = false;
  PixelFormat format = PixelFormat::invalid;  ///< of a storage binding; `invalid`: any
};

/// What a function (or the two of a render pipeline) wants bound.
struct FunctionBindings {
  std::array<TextureBinding, maxTextureIndex + 1> textures;
  std::uint32_t blockSize = 0;  ///< bytes of the uniform block; 0: it has none
};

struct FunctionInfo {
  FunctionBindings bindings;
  /// Threads of a group as the source says; 0 where the specialisation constant decides.
  Size fixedGroupSize;
};

/// The functions of a SPIR-V module by name. Throws DeviceError unless the words are a whole module in this machine's
/// byte order: magic, version, every instruction inside the words, every name ended, no name twice.
std::map<std::string, VkShaderStageFlagBits> findFunctions(std::span<const std::uint32_t> words);

/// Both, when the same index is used alike (or by one only). Throws DeviceError otherwise; `name` is for its text.
FunctionBindings mergeBindings(const FunctionBindings& a, const FunctionBindings& b, const std::string& name);

/// Reads from a module what its functions want bound. The module is parsed once.
class FunctionReflection {
 public:
  /// Throws DeviceError when the module can't be understood.
  explicit FunctionReflection(std::span<const std::uint32_t> words);
  /// Throws DeviceError when the function wants something that this interface does not have.
  FunctionInfo describe(const std::string& name, VkShaderStageFlagBits stage) const;

 private:
  struct ContextDeleter {
    void operator()(spvc_context_s* context) const;
  };
  std::unique_ptr<spvc_context_s, ContextDeleter> context_;
  spvc_compiler_s* compiler_ = nullptr;
};

}  // namespace veloria::gpu::vulkan
