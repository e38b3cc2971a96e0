#include <cstdlib>
#include <string_view>

#include "Backend.h"

namespace veloria::tests {

// The CPU's, unless VELORIA_TEST_SET is "vulkan".
const Backend& backend() {
  const char* set = std::getenv("VELORIA_TEST_SET");
  return set != nullptr && std::string_view(set) == "vulkan" ? vulkanBackend() : cpuBackend();
}

}  // namespace veloria::tests
