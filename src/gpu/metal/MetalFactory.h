#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "gpu/Device.h"
#include "gpu/Surface.h"

/// The Metal back end's public part: a device and, for a layer, a surface. Includes no header of the system.
namespace veloria::gpu::metal {

struct DeviceInfo {
  std::uint32_t index = 0;  ///< as MetalOptions::gpu takes it
  std::string name;
};

struct MetalOptions {
  /// An index of listDevices(), a part of a device's name (in any case), or empty for the system's choice.
  std::string gpu;
};

/// The GPUs of this computer; empty if none supports Metal.
std::vector<DeviceInfo> listDevices();

/// Makes the device. Throws NoDeviceError if no GPU matches, and DeviceError if it can't be used. It does not measure
/// single passes (Completion::passes stays empty).
std::unique_ptr<Device> makeMetalDevice(const MetalOptions& options);

/// A surface that draws into `layer`, a CAMetalLayer, which it keeps. It sets the layer's device, size in pixels and
/// pixel format; its owner sets colour space, transparency and extended range. `device` (one of makeMetalDevice()) must
/// outlive it. For the wanted format bgra8Unorm it gives bgra8UnormSrgb. Throws PreconditionError if the object is not
/// a CAMetalLayer.
std::unique_ptr<Surface> makeSurface(Device& device, void* layer);

/// The MTLDevice behind `device` (one of makeMetalDevice()), which keeps owning it.
void* systemDevice(Device& device);

/// Wraps an MTLTexture of the same GPU so that functions can read it. It can't be written or read back. The result
/// keeps `owner` alive. Throws DeviceError if the object is not a texture or has an unknown pixel format.
std::shared_ptr<Texture> wrapTexture(Device& device, void* texture, std::shared_ptr<const void> owner);

/// For tests: from now on `device` behaves as if the system had removed it.
void simulateLoss(Device& device);

}  // namespace veloria::gpu::metal
