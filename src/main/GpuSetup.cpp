#include "main/GpuSetup.h"

#include <QCoreApplication>
#include <filesystem>

#include "base/PlatformWords.h"

namespace veloria {

ProgramPlaces programPlaces() {
  const std::filesystem::path folder = QCoreApplication::applicationDirPath().toStdString();
  std::error_code ignored;
  return {(folder / resourceFolderFromProgram).lexically_normal(), folder, std::filesystem::current_path(ignored)};
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
