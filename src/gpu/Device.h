#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "gpu/CommandBuffer.h"
#include "gpu/Pipeline.h"
#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria::gpu {

/// Makes command buffers. All queues of a device run in one order: that of commit().
class CommandQueue {
 public:
  virtual ~CommandQueue() = default;
  CommandQueue(const CommandQueue&) = delete;
  CommandQueue& operator=(const CommandQueue&) = delete;

  /// A fresh command buffer, or nullptr when none can be had (device lost). A queue holds three: with all of them in
  /// flight this waits for the oldest. One may be open at a time.
  virtual CommandBuffer* commandBuffer() = 0;

  /// Measures every function's time from the next buffer on (Completion::passes). Costs time; for benchmarks.
  virtual void setProfiling(bool on) = 0;

 protected:
  CommandQueue() = default;
};

/// A GPU. What this interface does not do: several GPUs at once, buffers, vertex data, depth, blending, mip maps,
/// three-dimensional textures. Everything made from a device must be released before it.
///
/// Thread: one thread makes, encodes and commits; completion handlers run on a thread of the device's.
class Device {
 public:
  virtual ~Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  virtual std::string name() const = 0;
  /// True after the device was lost; from then on nothing works but destruction.
  virtual bool lost() const = 0;
  /// Blocks until everything committed has run and its completion handlers have returned.
  virtual void waitIdle() = 0;

  /// Throws DeviceError when the bytes are not a shader library of this back end.
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes);
  std::unique_ptr<CommandQueue> makeCommandQueue();
  /// Throws DeviceError when the memory can't be had. The content starts undefined.
  std::shared_ptr<Texture> makeTexture(const TextureDescriptor& descriptor);
  /// The functions must be in the library. Throws DeviceError when the driver refuses them. Asked again for the same
  /// (whatever the label) while the first is in use, they give that one: a driver compiles for long and may keep what it
  /// compiled for ever.
  std::shared_ptr<ComputePipeline> makeComputePipeline(const Library& library, const std::string& function);
  std::shared_ptr<RenderPipeline> makeRenderPipeline(const Library& library,
                                                     const RenderPipelineDescriptor& descriptor);

 protected:
  Device() = default;

 private:
  virtual std::unique_ptr<Library> doMakeLibrary(std::span<const std::byte> bytes) = 0;
  virtual std::unique_ptr<CommandQueue> doMakeCommandQueue() = 0;
  virtual std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) = 0;
  virtual std::unique_ptr<ComputePipeline> doMakeComputePipeline(const Library& library,
                                                                 const std::string& function) = 0;
  virtual std::unique_ptr<RenderPipeline> doMakeRenderPipeline(const Library& library,
                                                               const RenderPipelineDescriptor& descriptor) = 0;
};

}  // namespace veloria::gpu
