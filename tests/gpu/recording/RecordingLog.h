#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "gpu/Types.h"

namespace veloria::gpu {
class Texture;
}  // namespace veloria::gpu

namespace veloria::gpu::recording {

enum class CallKind : std::uint8_t {
  makeTexture,
  makePipeline,
  writeTexture,
  readTexture,
  frame,
  run,
  present,
  commit,
};

/// One call, as plain data. Fields that a kind has no use for stay empty.
struct Call {
  CallKind kind = CallKind::commit;
  std::uint64_t frame = 0;               ///< the frame's number, from 1 in the order of being begun
  std::string label;                     ///< of a pass, frame or texture
  std::string function;                  ///< of a pass or pipeline: the compute or fragment function
  std::vector<const Texture*> textures;  ///< what a pass reads, its images last; may be gone by now
  std::vector<std::byte> bytes;          ///< of a pass
  Size size;                             ///< of the target
  const Texture* target = nullptr;       ///< of a pass, a read, a write; the texture made

  /// What a pass reads at an index; nullptr when that is nothing.
  const Texture* texture(std::size_t index) const { return index < textures.size() ? textures[index] : nullptr; }
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
  /// The functions of all passes in order.
  std::vector<std::string> functions() const;
  void clear() { calls_.clear(); }
  void add(Call call) { calls_.push_back(std::move(call)); }

 private:
  std::vector<Call> calls_;
};

}  // namespace veloria::gpu::recording
