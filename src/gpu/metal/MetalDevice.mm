#include "gpu/metal/MetalDevice.h"

#include <memory>

#include "gpu/Precondition.h"
#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalFrame.h"
#include "gpu/metal/MetalPipeline.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

namespace {

id<MTLSamplerState> makeSampler(id<MTLDevice> device) {
  MTLSamplerDescriptor* descriptor = [MTLSamplerDescriptor new];
  descriptor.minFilter = MTLSamplerMinMagFilterLinear;
  descriptor.magFilter = MTLSamplerMinMagFilterLinear;
  descriptor.sAddressMode = MTLSamplerAddressModeClampToEdge;
  descriptor.tAddressMode = MTLSamplerAddressModeClampToEdge;
  return [device newSamplerStateWithDescriptor:descriptor];
}

}  // namespace

MetalDevice::MetalDevice(id<MTLDevice> device)
    : device_(device), queue_([device newCommandQueue]), sampler_(makeSampler(device)) {
  if (queue_ == nil) throw DeviceError("the device makes no command queue");
  if (sampler_ == nil) throw DeviceError("the device makes no sampler");
}

MetalDevice::~MetalDevice() {
  completion_.drain();
}

std::string MetalDevice::name() const {
  return plainString(device_.name);
}

void MetalDevice::requireAlive() const {
  if (lost_) throw DeviceLostError("the Metal device is lost");
}

std::unique_ptr<Library> MetalDevice::makeLibrary(std::span<const std::byte> bytes) {
  return std::make_unique<MetalLibrary>(device_, bytes);
}

std::unique_ptr<FrameQueue> MetalDevice::makeFrameQueue() {
  return std::make_unique<MetalQueue>(*this);
}

std::shared_ptr<Texture> MetalDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  requireAlive();
  return std::make_shared<MetalTexture>(*this, descriptor);
}

std::unique_ptr<Pipeline> MetalDevice::doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) {
  requireAlive();
  return std::make_unique<MetalPipeline>(device_, static_cast<const MetalLibrary&>(library), descriptor);
}

MetalDevice& metalDevice(Device& device) {
  auto* metal = dynamic_cast<MetalDevice*>(&device);
  require(metal != nullptr, "the device is not a Metal device");
  return *metal;
}

}  // namespace veloria::gpu::metal
