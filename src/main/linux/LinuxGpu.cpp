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

constexpr const char* defaultMark = "  [default]";

std::string line(const std::string& number, const char* kind, const std::string& rest) {
  std::array<char, 64> head{};
  std::snprintf(head.data(), head.size(), "%-4s %-10s ", number.c_str(), kind);
  return head.data() + rest;
}

std::string lineFor(const gpu::vulkan::DeviceInfo& device, bool isDefault) {
  return line(std::to_string(device.index), gpu::vulkan::deviceTypeName(device.type),
              device.name + (device.usable ? "" : "  (can't be used: it lacks something that Veloria needs)") +
                  (isDefault ? defaultMark : ""));
}

std::string lineForCpu(bool isDefault) {
  std::string sets;
  for (const auto set : gpu::cpu::usableInstructionSets(gpu::cpu::renderCpuLibrary)) {
    sets += (sets.empty() ? "" : ", ") + std::string(gpu::cpu::instructionSetName(set));
  }
  return line("cpu", "cpu", "Veloria's own renderer (" + sets + ")" + (isDefault ? defaultMark : ""));
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

std::string nameInEnvironment() {
  return processEnvironment()("NIMBRA_GPU").value_or("");
}

std::string knownNames() {
  std::string names = gpu::cpu::knownWishes(gpu::cpu::renderCpuLibrary);
  for (const auto& device : gpu::vulkan::listDevices()) {
    names += ", " + std::to_string(device.index) + " (" + device.name + ")";
  }
  return names;
}

std::unique_ptr<gpu::Device> makeNamedDevice(const std::string& name, unsigned threads) {
  if (auto options = gpu::cpu::optionsFromWish(name, gpu::cpu::renderCpuLibrary)) {
    options->threads = threads;
    return makeCpuDevice(*options);
  }
  try {
    return makeVulkanDevice(name);
  } catch (const gpu::NoDeviceError& error) {
    throw gpu::NoDeviceError(std::string(error.what()) + "; there are: " + knownNames());
  }
}

std::unique_ptr<gpu::Device> makeHardwareDevice() {
  if (!hasGpuFile("/dev")) throw gpu::NoDeviceError("there is no GPU");
  const auto hardware = chooseHardware(gpu::vulkan::listDevices());
  if (!hardware) throw gpu::NoDeviceError("there is no Vulkan driver for the GPU, or none that Veloria can use");
  return makeVulkanDevice(std::to_string(*hardware));
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
  const std::string name = gpu.empty() ? nameInEnvironment() : gpu;
  if (!name.empty()) return makeNamedDevice(name, threads);
  try {
    return makeHardwareDevice();
  } catch (const gpu::NoDeviceError& error) {
    NimbraLog::debug(error.what());
  } catch (const gpu::DeviceError& error) {
    systemLog(std::string("Veloria: the GPU can't be used, so the CPU draws: ") + error.what());
  }
  return makeCpuDevice({.set = std::nullopt, .threads = threads});
}

std::unique_ptr<gpu::Device> makeNamedDeviceOrGpu() {
  const std::string name = nameInEnvironment();
  return name.empty() ? makeHardwareDevice() : makeNamedDevice(name, 0);
}

std::unique_ptr<gpu::Device> makeSubstitute() {
  if (!nameInEnvironment().empty()) throw gpu::NoDeviceError("NIMBRA_GPU names the device");
  return makeCpuDevice({});
}

std::vector<std::string> deviceLines() {
  std::vector<std::string> lines;
  const auto devices = gpu::vulkan::listDevices();
  const auto hardware = hasGpuFile("/dev") ? chooseHardware(devices) : std::optional<std::uint32_t>();
  for (const auto& device : devices) lines.push_back(lineFor(device, device.index == hardware));
  lines.push_back(lineForCpu(!hardware));
  return lines;
}

}  // namespace veloria
