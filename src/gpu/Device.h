#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "gpu/Frame.h"
#include "gpu/Pipeline.h"
#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria::gpu {

/// A GPU. Out of scope: several GPUs at once, buffers, vertex data, depth, blending, mip maps, three-dimensional
/// textures. Everything made from a device must be released before it.
///
/// Thread: one thread makes everything, begins frames and commits them; completion handlers run on a thread of the
/// device.
class Device {
 public:
  virtual ~Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  virtual std::string name() const = 0;
  /// True once the device is lost; from then on it can only be destroyed.
  virtual bool lost() const = 0;
  /// Blocks until everything committed has run and its completion handlers have returned.
  virtual void waitIdle() = 0;

  /// True if the functions are compiled into the program: makeLibrary() takes no bytes then.
  virtual bool hasCompiledFunctions() const { return false; }
  /// Throws DeviceError when the bytes are not a shader library of this back end.
  virtual std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) = 0;
  virtual std::unique_ptr<FrameQueue> makeFrameQueue() = 0;
  /// Throws DeviceError when memory runs out. The content starts undefined.
  std::shared_ptr<Texture> makeTexture(const TextureDescriptor& descriptor);
  /// The functions must be in the library. Throws DeviceError when the driver refuses them. Returns the same pipeline
  /// again while it is in use: compiling takes long, and some drivers never free what they compiled.
  std::shared_ptr<Pipeline> makePipeline(const Library& library, const PipelineDescriptor& descriptor);

 protected:
  Device() = default;

 private:
  virtual std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) = 0;
  virtual std::unique_ptr<Pipeline> doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) = 0;

  friend class FrameQueue;
  std::uint64_t newestFrame_ = 0;
};

}  // namespace veloria::gpu
