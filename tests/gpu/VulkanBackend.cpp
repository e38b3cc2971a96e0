#include <dlfcn.h>
#include <link.h>

#include <mutex>
#include <utility>

#include "Backend.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria::tests {

namespace {

// Validation reports on any thread, and while a device is being destroyed.
std::mutex mutex;
std::string complaints;

// Leak reports can name a library only while it is loaded, and drivers are unloaded with their device.
void keepLibrariesLoaded() {
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void*) {
        if (info->dlpi_name[0] != '\0') dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        return 0;
      },
      nullptr);
}

std::unique_ptr<gpu::Device> makeDevice() {
  gpu::vulkan::VulkanOptions options;
  options.validation = true;
  options.validationHandler = [](std::string_view text) {
    const std::lock_guard lock(mutex);
    complaints.append(text).append("\n");
  };
  auto device = gpu::vulkan::makeVulkanDevice(options);
  keepLibrariesLoaded();
  return device;
}

std::string takeComplaints() {
  const std::lock_guard lock(mutex);
  return std::exchange(complaints, {});
}

}  // namespace

const Backend& vulkanBackend() {
  static const Backend shared{makeDevice, [] { return readFile(GPU_TEST_LIBRARY); }, takeComplaints};
  return shared;
}

}  // namespace veloria::tests
