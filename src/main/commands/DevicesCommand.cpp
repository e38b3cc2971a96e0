#include <QCommandLineParser>
#include <cstdio>

#include "main/GpuSetup.h"
#include "main/commands/Command.h"
#include "main/commands/Commands.h"
#include "render/RendererError.h"

namespace veloria {

int runDevices(const QStringList& arguments) {
  QCommandLineParser parser;
  if (!parseArguments(parser, "veloria devices", arguments, 0)) return done;
  const auto lines = deviceLines();
  if (lines.empty()) throw RendererError::noDevice();
  for (const auto& line : lines) std::printf("%s\n", line.c_str());
  return done;
}

}  // namespace veloria
