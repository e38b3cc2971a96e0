#include "gpu/metal/MetalFactory.h"
#include "main/GpuSetup.h"

namespace veloria {

std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu) {
  return gpu::metal::makeMetalDevice({.gpu = gpu});
}

std::vector<std::string> deviceLines() {
  std::vector<std::string> lines;
  for (const auto& device : gpu::metal::listDevices())
    lines.push_back(std::to_string(device.index) + "  " + device.name);
  return lines;
}

}  // namespace veloria
