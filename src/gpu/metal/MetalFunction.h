#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "gpu/CommandBuffer.h"

namespace veloria::gpu::metal {

enum class BindingKind : std::uint8_t { texture, buffer, sampler, other };

/// What a function (or the two of a render pipeline) wants bound.
struct FunctionBindings {
  std::array<bool, maxTextureIndex + 1> textures{};
  std::size_t blockSize = 0;  ///< bytes of the uniform block; 0: it has none
};

/// Notes one binding that the compiled function uses. `bytes`: of a buffer. Throws DeviceError when this interface has
/// no such index: the library was not made for it. `function` is for the text.
void addBinding(FunctionBindings& bindings, BindingKind kind, std::size_t index, std::size_t bytes,
                const std::string& function);

/// Throws PreconditionError when `function` runs with less than it wants. `textures`: which indices are set.
void requireBound(const FunctionBindings& bindings, const std::array<bool, maxTextureIndex + 1>& textures,
                  std::size_t byteCount, const std::string& function);

}  // namespace veloria::gpu::metal
