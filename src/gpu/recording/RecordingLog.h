#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "gpu/Types.h"

namespace veloria::gpu {
class Drawable;
class Texture;
}  // namespace veloria::gpu

namespace veloria::gpu::recording {

enum class CallKind : std::uint8_t {
  makeTexture,
  makeComputePipeline,
  makeRenderPipeline,
  writeTexture,
  readTexture,
  commandBuffer,
  setLabel,
  addCompletedHandler,
  computeEncoder,
  renderEncoder,
  dispatch,
  draw,
  endEncoding,
  present,
  commit,
  wait,
  discard,
};

/// A texture as it was bound.
struct BoundTexture {
  std::uint32_t index = 0;
  const Texture* texture = nullptr;  ///< its identity; may be gone by now
  std::string label;
};

/// One call, as plain data. Fields that a kind has no use for stay empty.
struct Call {
  CallKind kind = CallKind::commit;
  std::uint64_t buffer = 0;  ///< number of the command buffer, from 1 in the order of being handed out
  std::string label;         ///< of the encoder (also for its dispatches and draws), buffer, pipeline or texture
  std::string function;      ///< compute or fragment function
  std::string vertexFunction;
  std::vector<BoundTexture> textures;         ///< everything bound, by index
  std::vector<std::byte> bytes;               ///< the inline bytes as they were at that moment
  Size threads;                               ///< of a dispatch; the size of a texture made
  PixelFormat format = PixelFormat::invalid;  ///< of a texture or render pipeline made
  std::uint32_t vertexCount = 0;
  const Texture* target = nullptr;  ///< of a pass, a read or a write
  const Drawable* drawable = nullptr;

  /// The texture bound at an index, nullptr when none is.
  const Texture* texture(std::uint32_t index) const;
  /// The bytes as a value of the layout's type. Throws std::length_error unless the sizes are equal.
  template <typename Value>
  Value as() const {
    requireByteCount(sizeof(Value));
    Value value;
    std::memcpy(&value, bytes.data(), sizeof(Value));
    return value;
  }

 private:
  void requireByteCount(std::size_t count) const;
};

/// Everything that was asked of a device, in order.
class RecordingLog {
 public:
  const std::vector<Call>& calls() const { return calls_; }
  std::vector<Call> ofKind(CallKind kind) const;
  std::size_t count(CallKind kind) const;
  /// The functions of all dispatches and draws in order.
  std::vector<std::string> functions() const;
  void clear() { calls_.clear(); }
  void add(Call call) { calls_.push_back(std::move(call)); }

 private:
  std::vector<Call> calls_;
};

}  // namespace veloria::gpu::recording
