#include "gpu/metal/MetalFactory.h"

#import <Metal/Metal.h>
#import <QuartzCore/QuartzCore.h>

#include "gpu/Precondition.h"
#include "gpu/metal/MetalDevice.h"
#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalSurface.h"

namespace veloria::gpu::metal {

namespace {

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

}  // namespace

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
  require([object isKindOfClass:[CAMetalLayer class]], "makeSurface: the layer is no CAMetalLayer");
  return std::make_unique<MetalSurface>(metalDevice(device), object);
}

void simulateLoss(Device& device) {
  metalDevice(device).markLost();
}

}  // namespace veloria::gpu::metal
