#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "gpu/Pipeline.h"
#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria::gpu {

class Drawable;

/// Limits of one pass.
inline constexpr std::uint32_t maxTextureIndex = 3;  ///< texture indices are 0 to 3
inline constexpr std::size_t maxInlineBytes = 4096;  ///< as `setBytes` takes them
inline constexpr std::uint32_t bufferIndex = 0;      ///< the only buffer index

/// Encodes compute dispatches. Textures and bytes stay bound from one dispatch to the next. Every dispatch sees what
/// the ones before it wrote (in this encoder, in earlier encoders and in earlier command buffers).
///
/// How a function reaches a binding: texture i is descriptor set 0, binding i, either a storage image or a combined
/// image sampler (bilinear, clamped to the edge); the bytes are the uniform block at descriptor set 1, binding 0.
/// The group size reaches the function as specialisation constants 0 (x) and 1 (y); a grid need not be a multiple of
/// it, so a function checks its own bounds.
///
/// Owned by its command buffer; valid until endEncoding().
class ComputeEncoder {
 public:
  virtual ~ComputeEncoder() = default;
  ComputeEncoder(const ComputeEncoder&) = delete;
  ComputeEncoder& operator=(const ComputeEncoder&) = delete;

  void setPipeline(const ComputePipeline& pipeline);
  void setTexture(const Texture& texture, std::uint32_t index);
  /// Copies `bytes` (1 to maxInlineBytes); the copy is bound until the next call.
  void setBytes(std::span<const std::byte> bytes, std::uint32_t index);
  /// Runs the pipeline over exactly width x height threads.
  void dispatchThreads(std::uint32_t width, std::uint32_t height);
  void endEncoding();

 protected:
  ComputeEncoder() = default;
  void reopen();  ///< back ends that recycle encoders call this when they hand one out again

 private:
  virtual void doSetPipeline(const ComputePipeline& pipeline) = 0;
  virtual void doSetTexture(const Texture& texture, std::uint32_t index) = 0;
  virtual void doSetBytes(std::span<const std::byte> bytes) = 0;
  virtual void doDispatch(std::uint32_t width, std::uint32_t height) = 0;
  virtual void doEnd() = 0;

  bool open_ = true;
  bool hasPipeline_ = false;
};

/// Encodes one render pass: cleared to (0, 0, 0, 0), stored at the end. Bindings as for ComputeEncoder; fragment
/// coordinates and texture coordinates have their origin at the top left.
class RenderEncoder {
 public:
  virtual ~RenderEncoder() = default;
  RenderEncoder(const RenderEncoder&) = delete;
  RenderEncoder& operator=(const RenderEncoder&) = delete;

  /// The pipeline's format must be the target's.
  void setPipeline(const RenderPipeline& pipeline);
  void setFragmentTexture(const Texture& texture, std::uint32_t index);
  void setFragmentBytes(std::span<const std::byte> bytes, std::uint32_t index);
  /// Draws triangles from `vertexCount` (a multiple of 3) generated vertices.
  void draw(std::uint32_t vertexCount);
  void endEncoding();

 protected:
  RenderEncoder() = default;
  void reopen(const Texture& target);

 private:
  virtual void doSetPipeline(const RenderPipeline& pipeline) = 0;
  virtual void doSetTexture(const Texture& texture, std::uint32_t index) = 0;
  virtual void doSetBytes(std::span<const std::byte> bytes) = 0;
  virtual void doDraw(std::uint32_t vertexCount) = 0;
  virtual void doEnd() = 0;

  bool open_ = false;
  bool hasPipeline_ = false;
  const Texture* target_ = nullptr;
};

/// The time one function took in a command buffer, summed over its dispatches or draws.
struct PassTime {
  const char* name = "";  ///< the function's name (fragment function for draws); lives as long as its pipeline
  double seconds = 0;
};

/// What a completion handler gets. Times are seconds on the GPU's clock; both 0 where the device has no timestamps.
struct Completion {
  double gpuStart = 0;
  double gpuEnd = 0;
  bool failed = false;               ///< the device was lost; nothing the buffer should have written can be trusted
  std::span<const PassTime> passes;  ///< empty unless the queue profiles; valid during the call only
};

using CompletedHandler = std::function<void(const Completion&)>;

/// One frame's work. Obtained from a queue, encoded once, committed once. The queue owns and recycles it: the pointer
/// is dead after commit() but for waitUntilCompleted() directly after it. One encoder is open at a time.
/// A buffer that is not committed is given back by discard().
class CommandBuffer {
 public:
  virtual ~CommandBuffer() = default;
  CommandBuffer(const CommandBuffer&) = delete;
  CommandBuffer& operator=(const CommandBuffer&) = delete;

  void setLabel(std::string_view label);
  /// Called once, on the device's completion thread, in the order in which buffers were committed; not later than the
  /// destruction of the device. Keep what it captures within two pointers, so that nothing is allocated.
  void addCompletedHandler(CompletedHandler handler);

  /// Opens an encoder; nullptr when the device can't make one (lost).
  ComputeEncoder* computeEncoder(std::string_view label);
  /// Opens a pass on `target`, which must have the usage renderTarget or be a drawable's texture.
  RenderEncoder* renderEncoder(const Texture& target, std::string_view label);

  /// Shows the drawable when the work is done. At most one a buffer, after its last pass.
  void present(Drawable& drawable);

  /// Submits. Throws DeviceLostError when the device is gone (the handlers have then been called with `failed`).
  void commit();
  void waitUntilCompleted();
  void discard();

 protected:
  CommandBuffer() = default;
  void reopen();

 private:
  virtual void doSetLabel(std::string_view label) = 0;
  virtual void doAddCompletedHandler(CompletedHandler handler) = 0;
  virtual ComputeEncoder* doComputeEncoder(std::string_view label) = 0;
  virtual RenderEncoder* doRenderEncoder(const Texture& target, std::string_view label) = 0;
  virtual void doPresent(Drawable& drawable) = 0;
  virtual void doCommit() = 0;
  virtual void doWait() = 0;
  virtual void doDiscard() = 0;
  virtual bool encoderOpen() const = 0;

  enum class State : std::uint8_t { open, committed, discarded };
  State state_ = State::open;
  bool presents_ = false;
};

}  // namespace veloria::gpu
