#include "gpu/metal/MetalDevice.h"

#import <Metal/Metal.h>
#import <QuartzCore/QuartzCore.h>

#include <memory>
#include <utility>

#include "gpu/Types.h"
#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalFactory.h"
#include "gpu/metal/MetalFrame.h"
#include "gpu/metal/MetalPipeline.h"
#include "gpu/metal/MetalSurface.h"
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

bool matches(NSUInteger index, id<MTLDevice> device, NSString* wish) {
  if ([wish isEqualToString:[NSString stringWithFormat:@"%lu", static_cast<unsigned long>(index)]]) return true;
  return [device.name rangeOfString:wish options:NSCaseInsensitiveSearch].location != NSNotFound;
}

id<MTLDevice> chooseDevice(const std::string& wish) {
  if (wish.empty()) return MTLCreateSystemDefaultDevice();
  NSArray* devices = MTLCopyAllDevices();
  for (NSUInteger index = 0; index < devices.count; ++index) {
    if (matches(index, devices[index], metalString(wish))) return devices[index];
  }
  throw NoDeviceError("no Metal device matches \"" + wish + "\"");
}

TextureDescriptor describeShared(id<MTLTexture> texture) {
  TextureDescriptor descriptor;
  descriptor.format = static_cast<PixelFormat>(texture.pixelFormat);
  descriptor.size = {static_cast<std::uint32_t>(texture.width), static_cast<std::uint32_t>(texture.height)};
  descriptor.storage = StorageMode::shared;
  if (bytesPerPixel(descriptor.format) == 0) throw DeviceError("what was captured has an unknown pixel format");
  return descriptor;
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

std::vector<DeviceInfo> listDevices() {
  std::vector<DeviceInfo> found;
  @autoreleasepool {
    for (id<MTLDevice> device in MTLCopyAllDevices()) {
      found.push_back({static_cast<std::uint32_t>(found.size()), plainString(device.name)});
    }
  }
  return found;
}

std::unique_ptr<Device> makeMetalDevice(const MetalOptions& options) {
  @autoreleasepool {
    id<MTLDevice> device = chooseDevice(options.gpu);
    if (device == nil) throw NoDeviceError("there is no Metal device");
    return std::make_unique<MetalDevice>(device);
  }
}

std::unique_ptr<Surface> makeSurface(Device& device, void* layer) {
  id object = (__bridge id)layer;
  require([object isKindOfClass:[CAMetalLayer class]], "makeSurface: the layer is not a CAMetalLayer");
  return std::make_unique<MetalSurface>(metalDevice(device), object);
}

void* systemDevice(Device& device) {
  return (__bridge void*)metalDevice(device).device();
}

std::shared_ptr<Texture> wrapTexture(Device& device, void* texture, std::shared_ptr<const void> owner) {
  id object = (__bridge id)texture;
  if (![object conformsToProtocol:@protocol(MTLTexture)]) throw DeviceError("what was captured is not a texture");
  return std::make_shared<MetalTexture>(metalDevice(device), describeShared(object), object, std::move(owner));
}

void simulateLoss(Device& device) {
  metalDevice(device).markLost();
}

}  // namespace veloria::gpu::metal
