#include <cstdio>
#include <cstdlib>

#include "Backend.h"
#include "gpu/cpu/CpuFactory.h"

namespace veloria::gpu::cpu {
extern const CompiledLibrary testsCpuLibrary;
}

namespace veloria::tests {

namespace {

// VELORIA_TEST_SET names an instruction set; without it, the fastest that this processor runs.
std::unique_ptr<gpu::Device> makeDevice() {
  const char* set = std::getenv("VELORIA_TEST_SET");
  auto options =
      gpu::cpu::optionsFromWish(set != nullptr ? std::string("cpu:") + set : "cpu", gpu::cpu::testsCpuLibrary);
  options->threads = 3;
  return gpu::cpu::makeCpuDevice(gpu::cpu::testsCpuLibrary, *options);
}

}  // namespace

const Backend& backend() {
  static const Backend shared{makeDevice, [] { return std::vector<std::byte>(); }, [] { return std::string(); }};
  return shared;
}

}  // namespace veloria::tests
