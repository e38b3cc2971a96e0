#include "Backend.h"
#include "gpu/metal/MetalFactory.h"

namespace veloria::tests {

// What is wrong with a call ends the program: Metal.cmake switches the system's own validation on.
const Backend& backend() {
  static const Backend shared{[] { return gpu::metal::makeMetalDevice({}); }, [] { return readFile(GPU_TEST_LIBRARY); },
                              [] { return std::string(); }};
  return shared;
}

}  // namespace veloria::tests
