#include <dlfcn.h>
#include <link.h>

#include <mutex>
#include <utility>

#include "Backend.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria::gpu::test {

namespace {

// Validation may speak on any thread, and while a device is being destroyed.
class Complaints {
 public:
  void add(std::string_view text) {
    const std::lock_guard lock(mutex_);
    text_.append(text).append("\n");
  }
  std::string take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(text_, {});
  }

 private:
  std::mutex mutex_;
  std::string text_;
};

Complaints& complaints() {
  static Complaints shared;
  return shared;
}

// Leak reports can name a library only while it is loaded, and drivers are unloaded with their device.
void keepLibrariesLoaded() {
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void*) {
        if (info->dlpi_name[0] != '\0') dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        return 0;
      },
      nullptr);
}

std::unique_ptr<Device> makeDevice() {
  vulkan::VulkanOptions options;
  options.validation = true;
  options.validationHandler = [](std::string_view text) { complaints().add(text); };
  auto device = vulkan::makeVulkanDevice(options);
  keepLibrariesLoaded();
  return device;
}

}  // namespace

const Backend& backend() {
  static const Backend vulkan{"vulkan", true, makeDevice, [] { return readFile(GPU_TEST_LIBRARY); },
                              [] { return complaints().take(); }};
  return vulkan;
}

}  // namespace veloria::gpu::test
