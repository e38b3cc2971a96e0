#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gpu/Device.h"

namespace veloria::tests {

/// What the suites need of a back end.
struct Backend {
  std::function<std::unique_ptr<gpu::Device>()> makeDevice;
  std::function<std::vector<std::byte>()> libraryBytes;  ///< of the suites' own functions
  /// What the back end has complained about since the last call, also while a device was being destroyed.
  std::function<std::string()> complaints;
};

/// The back end that this program tests; the program defines it.
const Backend& backend();

/// With the validation layer.
const Backend& vulkanBackend();
/// VELORIA_TEST_SET names an instruction set; without it, the fastest that this processor runs.
const Backend& cpuBackend();

std::vector<std::byte> readFile(const std::string& path);

/// All channels of all texels of a half float texture. Writing rounds to nearest, ties to even.
std::vector<float> readFloats(const gpu::Texture& texture);
void writeFloats(gpu::Texture& texture, const std::vector<float>& values);

}  // namespace veloria::tests
