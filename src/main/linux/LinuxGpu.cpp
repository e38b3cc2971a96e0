#include "main/linux/LinuxGpu.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

#include "base/Environment.h"
#include "base/Log.h"
#include "gpu/cpu/CpuFactory.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "main/GpuSetup.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria::gpu::cpu {
extern const CompiledLibrary renderCpuLibrary;
}

namespace veloria {

namespace {

std::filesystem::path pipelineCachePath() {
  const auto folder = cacheFolder(processEnvironment());
  return folder && makeUserFolder(*folder) ? *folder / "pipelines.bin" : std::filesystem::path();
}

std::string line(const std::string& number, const char* kind, const std::string& rest) {
  std::array<char, 64> head{};
  std::snprintf(head.data(), head.size(), "%-4s %-10s ", number.c_str(), kind);
  return head.data() + rest;
}

std::string lineFor(const gpu::vulkan::DeviceInfo& device) {
  return line(std::to_string(device.index), gpu::vulkan::deviceTypeName(device.type),
              device.name + (device.usable ? "" : "  (can't be used: it lacks something that Veloria needs)"));
}

std::string lineForCpu() {
  std::string sets;
  for (const auto set : gpu::cpu::usableInstructionSets(gpu::cpu::renderCpuLibrary)) {
    sets += (sets.empty() ? "" : ", ") + std::string(gpu::cpu::instructionSetName(set));
  }
  return line("cpu", "cpu", "Veloria's own renderer (" + sets + ")");
}

std::unique_ptr<gpu::Device> makeVulkanDevice(const std::string& gpu) {
  gpu::vulkan::VulkanOptions options;
  options.gpu = gpu;
  options.validationHandler = [](std::string_view text) { systemLog(text); };
  options.pipelineCachePath = pipelineCachePath();
  return gpu::vulkan::makeVulkanDevice(options);
}

std::unique_ptr<gpu::Device> makeCpuDevice(const gpu::cpu::CpuOptions& options) {
  return gpu::cpu::makeCpuDevice(gpu::cpu::renderCpuLibrary, options);
}

std::unique_ptr<gpu::Device> makeBestDevice(unsigned threads) {
  const auto hardware =
      hasGpuFile("/dev") ? chooseHardware(gpu::vulkan::listDevices()) : std::optional<std::uint32_t>();
  if (hardware) {
    try {
      return makeVulkanDevice(std::to_string(*hardware));
    } catch (const gpu::DeviceError& error) {
      systemLog(std::string("Veloria: the GPU can't be used, so the CPU draws: ") + error.what());
    }
  }
  return makeCpuDevice({.set = std::nullopt, .threads = threads});
}

}  // namespace

std::optional<std::uint32_t> chooseHardware(const std::vector<gpu::vulkan::DeviceInfo>& devices) {
  using gpu::vulkan::DeviceType;
  const gpu::vulkan::DeviceInfo* best = nullptr;
  for (const auto& device : devices) {
    const bool hardware = device.usable && device.type != DeviceType::cpu && device.type != DeviceType::other;
    if (hardware && (best == nullptr || device.type < best->type)) best = &device;
  }
  return best != nullptr ? std::optional(best->index) : std::nullopt;
}

bool hasGpuFile(const std::filesystem::path& devices) {
  std::error_code ignored;
  for (const char* name : {"nvidia0", "nvidiactl", "dxg", "kgsl-3d0", "mali0"}) {
    if (std::filesystem::exists(devices / name, ignored)) return true;
  }
  std::filesystem::directory_iterator files(devices / "dri", ignored);
  return std::any_of(begin(files), end(files),
                     [](const auto& file) { return file.path().filename().string().starts_with("renderD"); });
}

std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu, unsigned threads) {
  const std::string wish = gpu.empty() ? processEnvironment()("NIMBRA_GPU").value_or("") : gpu;
  if (wish.empty()) return makeBestDevice(threads);
  if (auto options = gpu::cpu::optionsFromWish(wish, gpu::cpu::renderCpuLibrary)) {
    options->threads = threads;
    return makeCpuDevice(*options);
  }
  return makeVulkanDevice(wish);
}

std::vector<std::string> deviceLines() {
  std::vector<std::string> lines;
  for (const auto& device : gpu::vulkan::listDevices()) lines.push_back(lineFor(device));
  lines.push_back(lineForCpu());
  return lines;
}

}  // namespace veloria
