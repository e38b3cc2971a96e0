#include "gpu/metal/MetalFunction.h"

#include <algorithm>

namespace veloria::gpu::metal {

namespace {

[[noreturn]] void refuse(const std::string& function, const char* what, std::size_t index) {
  throw DeviceError("function " + function + " wants " + what + " " + std::to_string(index) +
                    ", which this interface does not have");
}

}  // namespace

void addBinding(FunctionBindings& bindings, BindingKind kind, std::size_t index, std::size_t bytes,
                const std::string& function) {
  switch (kind) {
    case BindingKind::texture:
      if (index > maxTextureIndex) refuse(function, "texture", index);
      bindings.textures[index] = true;
      return;
    case BindingKind::buffer:
      if (index != bufferIndex) refuse(function, "buffer", index);
      bindings.blockSize = std::max(bindings.blockSize, bytes);
      return;
    case BindingKind::sampler:
      if (index > maxTextureIndex) refuse(function, "sampler", index);
      return;
    case BindingKind::other:
      refuse(function, "a binding of another kind at index", index);
  }
}

void requireBound(const FunctionBindings& bindings, const std::array<bool, maxTextureIndex + 1>& textures,
                  std::size_t byteCount, const std::string& function) {
  for (std::size_t index = 0; index < textures.size(); ++index) {
    if (bindings.textures[index] && !textures[index]) {
      throw PreconditionError(function + " wants a texture at index " + std::to_string(index) + ", none is set");
    }
  }
  if (byteCount < bindings.blockSize) {
    throw PreconditionError(function + " wants " + std::to_string(bindings.blockSize) + " bytes, " +
                            std::to_string(byteCount) + " are set");
  }
}

}  // namespace veloria::gpu::metal
