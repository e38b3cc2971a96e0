#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "gpu/Pipeline.h"
#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria::gpu {

class Device;
class Drawable;

inline constexpr std::size_t maxTextures = 4;
inline constexpr std::size_t maxImages = 3;
inline constexpr std::size_t maxPassBytes = 4096;

/// One run of a pipeline: over every texel of the target for a compute function, over the whole target, cleared to
/// (0, 0, 0, 0) before, for a fragment function. It reads only what it is given here, and writes only its target.
///
/// Where a function finds its inputs, in every library (script/check-bindings checks the sources):
///   set 0, binding 0 to 3  `textures` in order: bilinear, clamped to the edge
///   set 0, binding 4 to 6  `images` in order: single texels, read only. Compute functions only
///   set 0, binding 7       the target of a compute function: an image, written only
///   set 1, binding 0       `bytes`: the uniform block, std140
///   constants 0 and 1      the group's width and height. A target need not be a multiple of it, so a compute function
///                          checks its bounds
///   constants 2 and 3      the kind of the target, and the pipeline's variant
/// Fragment and texture coordinates have their origin at the top left.
struct Pass {
  const Pipeline& pipeline;
  const char* label = "";                              ///< for debuggers
  std::array<const Texture*, maxTextures> textures{};  ///< those that the function has; the rest is null
  std::array<const Texture*, maxImages> images{};
  std::span<const std::byte> bytes{};  ///< at most maxPassBytes, copied; as long as the function's block, or none
  const Texture& target;               ///< of a fragment function: of the pipeline's format
};

/// The time one function took in a frame, summed over its passes.
struct PassTime {
  const char* name = "";  ///< the function's name; lives as long as its pipeline
  double seconds = 0;
};

/// What a completion handler gets. Times are seconds on the GPU's clock; both 0 if the device has no timestamps.
struct Completion {
  double gpuStart = 0;
  double gpuEnd = 0;
  bool failed = false;               ///< the device was lost; nothing the frame should have written can be trusted
  std::span<const PassTime> passes;  ///< empty unless the queue profiles; valid during the call only
};

/// Keep what it captures within two pointers, so that nothing is allocated.
using CompletedHandler = std::function<void(const Completion&)>;

/// One frame's work. Begun by a queue, which owns and recycles it; the pointer is invalid after commit(), and once the
/// device's next frame is begun: a frame not committed by then is dropped.
class Frame {
 public:
  virtual ~Frame() = default;
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  /// Every pass sees what the ones before it wrote, in this frame and in earlier ones.
  void run(const Pass& pass);

  /// Shows the drawable when the work is done. At most one a frame, after its last pass.
  void present(Drawable& drawable);

  /// Submits. `handler` is called on the device's completion thread, in the order in which frames were committed; not
  /// later than the destruction of the device. Throws DeviceLostError when the device is gone (the handler has then
  /// been called with `failed`).
  void commit(CompletedHandler handler = nullptr);

 protected:
  Frame() = default;

 private:
  friend class FrameQueue;
  virtual void doRun(const Pass& pass) = 0;
  virtual void doPresent(Drawable& drawable) = 0;
  virtual void doCommit(CompletedHandler handler) = 0;

  void requireOpen() const;

  const std::uint64_t* newest_ = nullptr;  // number of the device's newest frame; null when this one is committed
  std::uint64_t number_ = 0;
  bool presents_ = false;
};

/// Makes frames. All queues of a device run in one order: that of commit().
class FrameQueue {
 public:
  virtual ~FrameQueue() = default;
  FrameQueue(const FrameQueue&) = delete;
  FrameQueue& operator=(const FrameQueue&) = delete;

  /// A fresh frame, or nullptr once the device is lost. A queue holds three; while all are in flight this waits for the
  /// oldest. `label` is for debuggers.
  Frame* begin(const char* label);

  /// Measures the time of every function from the next frame on (Completion::passes), if the back end can. Slows frames
  /// down; for benchmarks.
  virtual void setProfiling(bool on) = 0;

 protected:
  explicit FrameQueue(Device& device) : device_(device) {}

 private:
  virtual Frame* doBegin(const char* label) = 0;

  Device& device_;
};

}  // namespace veloria::gpu
