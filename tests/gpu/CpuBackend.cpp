#include <cstdio>
#include <cstdlib>

#include "Backend.h"
#include "gpu/cpu/CpuFactory.h"

namespace veloria::gpu::cpu {
extern const CompiledLibrary GPU_TEST_CPU_LIBRARY;
}

namespace veloria::tests {

namespace {

std::unique_ptr<gpu::Device> makeDevice() {
  const char* set = std::getenv("VELORIA_TEST_SET");
  auto options =
      gpu::cpu::optionsFromWish(set != nullptr ? std::string("cpu:") + set : "cpu", gpu::cpu::GPU_TEST_CPU_LIBRARY);
  options->threads = 3;
  return gpu::cpu::makeCpuDevice(gpu::cpu::GPU_TEST_CPU_LIBRARY, *options);
}

}  // namespace

const Backend& cpuBackend() {
  static const Backend shared{makeDevice, [] { return std::vector<std::byte>(); }, [] { return std::string(); }};
  return shared;
}

}  // namespace veloria::tests
