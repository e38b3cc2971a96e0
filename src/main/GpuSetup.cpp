#include "main/GpuSetup.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>
#include <filesystem>

#include "base/PlatformWords.h"
#include "main/commands/Arguments.h"
#include "main/commands/Command.h"
#include "render/RendererError.h"

namespace veloria {

ProgramPlaces programPlaces() {
  const std::filesystem::path folder = QCoreApplication::applicationDirPath().toStdString();
  std::error_code ignored;
  return {(folder / resourceFolderFromProgram).lexically_normal(), folder, std::filesystem::current_path(ignored)};
}

void addGpuOptions(QCommandLineParser& parser) {
  parser.addOptions(
      {{"gpu", "GPU to use: its name, a part of it, or its number, or cpu ('veloria devices' lists them).", "name"},
       {"threads", "Threads that draw on the CPU, 1 to 64 (default: one for each core, at most 8).", "count"}});
}

Gpu gpuFrom(const QCommandLineParser& parser) {
  return gpuFrom(parser, parser.value("gpu").toStdString());
}

Gpu gpuFrom(const QCommandLineParser& parser, const std::string& name) {
  const long threads =
      parser.isSet("threads") ? parseCount("--threads", parser.value("threads").toStdString(), 1, 64) : 0;
  Gpu gpu;
  gpu.device = makeDevice(name, static_cast<unsigned>(threads));
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
