#include "main/GpuSetup.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>
#include <filesystem>

#include "base/PlatformWords.h"
#include "main/commands/Command.h"
#include "render/RendererError.h"

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
  if (deviceLines().empty()) throw RendererError::noDevice();
  Gpu gpu;
  gpu.device = makeDevice(parser.value("gpu").toStdString());
  gpu.library = loadShaderLibrary(*gpu.device, shaderLibraryCandidates(programPlaces()));
  return gpu;
}

int runDevices(const QStringList& arguments) {
  QCommandLineParser parser;
  if (!parseArguments(parser, "veloria devices", arguments, 0)) return done;
  const auto lines = deviceLines();
  if (lines.empty()) throw RendererError::noDevice();
  for (const auto& line : lines) std::printf("%s\n", line.c_str());
  return done;
}

}  // namespace veloria
