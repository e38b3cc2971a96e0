#include "main/GpuSetup.h"

#include <QCoreApplication>
#include <filesystem>

#include "base/Environment.h"
#include "base/Log.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "platform/posix/files/UserFolders.h"
#include "render/RendererError.h"

namespace veloria {

namespace {

std::filesystem::path pipelineCachePath() {
  const auto folder = cacheFolder(processEnvironment());
  return folder && makeUserFolder(*folder) ? *folder / "pipelines.bin" : std::filesystem::path();
}

}  // namespace

ProgramPlaces programPlaces() {
  const std::filesystem::path folder = QCoreApplication::applicationDirPath().toStdString();
  std::error_code ignored;
  return {(folder / "../share/veloria").lexically_normal(), folder, std::filesystem::current_path(ignored)};
}

std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu) {
  if (gpu::vulkan::listDevices().empty()) throw RendererError::noDevice();
  gpu::vulkan::VulkanOptions options;
  options.gpu = gpu;
  options.validationHandler = [](std::string_view text) { systemLog(text); };
  options.pipelineCachePath = pipelineCachePath();
  return gpu::vulkan::makeVulkanDevice(options);
}

void addGpuOption(QCommandLineParser& parser) {
  parser.addOption(
      {"gpu", "GPU to use: its name, a part of it, or its number ('veloria devices' lists them).", "name"});
}

Gpu gpuFrom(const QCommandLineParser& parser) {
  Gpu gpu;
  gpu.device = makeDevice(parser.value("gpu").toStdString());
  gpu.library = loadShaderLibrary(*gpu.device, shaderLibraryCandidates(programPlaces()));
  return gpu;
}

}  // namespace veloria
