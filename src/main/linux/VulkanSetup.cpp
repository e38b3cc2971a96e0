#include <array>
#include <cstdio>
#include <filesystem>

#include "base/Environment.h"
#include "base/Log.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "main/GpuSetup.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace {

std::filesystem::path pipelineCachePath() {
  const auto folder = cacheFolder(processEnvironment());
  return folder && makeUserFolder(*folder) ? *folder / "pipelines.bin" : std::filesystem::path();
}

std::string lineFor(const gpu::vulkan::DeviceInfo& device) {
  std::array<char, 64> head{};
  std::snprintf(head.data(), head.size(), "%u  %-10s ", device.index, gpu::vulkan::deviceTypeName(device.type));
  return head.data() + device.name + (device.usable ? "" : "  (can't be used: it lacks something that Veloria needs)");
}

}  // namespace

std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu) {
  gpu::vulkan::VulkanOptions options;
  options.gpu = gpu;
  options.validationHandler = [](std::string_view text) { systemLog(text); };
  options.pipelineCachePath = pipelineCachePath();
  return gpu::vulkan::makeVulkanDevice(options);
}

std::vector<std::string> deviceLines() {
  std::vector<std::string> lines;
  for (const auto& device : gpu::vulkan::listDevices()) lines.push_back(lineFor(device));
  return lines;
}

}  // namespace veloria
