#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "gpu/Device.h"
#include "gpu/Surface.h"

/// All that others need of the Metal back end: a device and, for a layer, a surface. No header of the system is needed
/// to include this one.
namespace veloria::gpu::metal {

struct DeviceInfo {
  std::uint32_t index = 0;  ///< as MetalOptions::gpu takes it
  std::string name;
};

struct MetalOptions {
  /// An index of listDevices(), a part of a device's name (in any case), or empty for the system's choice.
  std::string gpu;
};

/// The GPUs of this computer; empty when it has none for Metal.
std::vector<DeviceInfo> listDevices();

/// Makes the device. Throws NoDeviceError when there is no GPU as wished, and DeviceError when it can't be used.
/// What it does not do: measure single passes (Completion::passes stays empty).
std::unique_ptr<Device> makeMetalDevice(const MetalOptions& options);

/// A surface that draws into `layer`, a CAMetalLayer, which it keeps. It sets the layer's device, size in pixels and
/// pixel format; colour space, transparency and extended range are its owner's. `device` (one of makeMetalDevice())
/// must outlive it. For the wanted format bgra8Unorm it gives bgra8UnormSrgb.
/// Throws PreconditionError when the object is no CAMetalLayer.
std::unique_ptr<Surface> makeSurface(Device& device, void* layer);

/// For tests: from now on `device` behaves as if the system had taken it away.
void simulateLoss(Device& device);

}  // namespace veloria::gpu::metal
