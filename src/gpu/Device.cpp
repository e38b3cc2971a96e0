#include "gpu/Device.h"

#include "gpu/Precondition.h"

namespace veloria::gpu {

namespace {

bool inRange(std::uint32_t length) {
  return length >= 1 && length <= maxTextureLength;
}

void requireFunction(const Library& library, const std::string& function) {
  if (!library.contains(function)) throw PreconditionError("the library has no function \"" + function + "\"");
}

}  // namespace

std::shared_ptr<Texture> Device::makeTexture(const TextureDescriptor& descriptor) {
  require(descriptor.format != PixelFormat::invalid, "Device::makeTexture: the format is invalid");
  require(inRange(descriptor.size.width) && inRange(descriptor.size.height),
          "Device::makeTexture: the size is not 1 to 16384 in each direction");
  require(static_cast<std::uint32_t>(descriptor.usage) >= 1 && static_cast<std::uint32_t>(descriptor.usage) <= 7,
          "Device::makeTexture: the usage has no bit, or one that does not exist");
  return doMakeTexture(descriptor);
}

std::shared_ptr<Pipeline> Device::makePipeline(const Library& library, const PipelineDescriptor& descriptor) {
  requireFunction(library, descriptor.function);
  if (!descriptor.vertexFunction.empty()) {
    requireFunction(library, descriptor.vertexFunction);
    require(descriptor.format != PixelFormat::invalid, "Device::makePipeline: the format is invalid");
  }
  auto& entry = library.pipelines_[descriptor];
  auto pipeline = entry.lock();
  if (pipeline == nullptr) entry = pipeline = doMakePipeline(library, descriptor);
  return pipeline;
}

}  // namespace veloria::gpu
