#include <QCoreApplication>
#include <array>
#include <cstdio>
#include <string_view>

#include "main/Platform.h"
#include "main/commands/Command.h"

namespace {

using namespace veloria;

struct CommandEntry {
  std::string_view name;
  int (*run)(const QStringList&);
  const char* summary;
};

constexpr std::array<CommandEntry, 6> commands{{
    {"render", runRender, "draw frames without a display, into pictures or as raw rows"},
    {"bench", runBench, "measure drawing"},
    {"check", runCheck, "check a scene script"},
    {"status", runStatus, "show the state of the running band"},
    {"panel", runPanel, "let the light through the desktop's panel, or put the panel back"},
    {"devices", runDevices, "list the GPUs"},
}};

void printHelp() {
  std::printf(
      "Veloria paints a living band of light over the strip of the screen that the top panel occupies.\n\n"
      "Usage: veloria            start the band, or open its settings if it is running\n");
  for (const auto& command : commands) {
    std::printf("       veloria %-10s %s\n", command.name.data(), command.summary);
  }
  std::printf(
      "       veloria --version\n\n"
      "'veloria COMMAND --help' lists a command's options. 'veloria --help' shows this.\n\n"
      "Environment:\n"
      "  NIMBRA_VISUALIZER   autonomous, music, agent, weather, wind or script, for this run\n"
      "  NIMBRA_LAYER        desktopStrip, aboveMenuBar or desktopFull, for this run\n"
      "  NIMBRA_HDR          1 asks for an extended-range surface, anything else for 8 bits\n"
      "  NIMBRA_SCRIPT       a scene script's text, for this run\n"
      "  NIMBRA_BAR_HEIGHT   height of the panel in points, if the desktop does not report it\n"
      "  NIMBRA_NOTCH        WIDTHxHEIGHT of a camera housing at the top centre, in points\n"
      "  NIMBRA_WEATHER_URL  another address of the forecast service (https, or http on this computer)\n"
      "  NIMBRA_DEBUG        1 writes diagnostics to standard error\n"
      "  NIMBRA_DEBUG_SOLID  above 0 fills the band with one colour\n"
      "  NIMBRA_DEBUG_LEVEL  a number: above 0 over the panel, else on the desktop\n\n"
      "Exit codes: 0 success, 1 failure, 2 usage error, 3 this computer can't run the band.\n");
}

}  // namespace

int main(int argc, char** argv) {
  runAsHelper(argc, argv);
  QCoreApplication::setApplicationName("veloria");
  if (argc <= 1) return runCommand("veloria", [&] { return runApplication(argc, argv); });

  QCoreApplication application(argc, argv);
  keepNumbersPlain();
  const QStringList arguments = QCoreApplication::arguments().mid(1);
  const std::string first = arguments.isEmpty() ? std::string() : arguments.first().toStdString();
  if (first == "--help" || first == "-h" || first == "help") return printHelp(), done;
  if (first == "--version" || first == "-v") return std::printf("veloria %s\n", VELORIA_VERSION), done;
  for (const auto& command : commands) {
    if (first != command.name) continue;
    return runCommand("veloria " + first, [&] { return command.run(arguments.mid(1)); });
  }
  return runCommand("veloria", [&]() -> int {
    throw UsageError("unknown command '" + first +
                     "'. Commands: render, bench, check, status, panel, devices. See 'veloria --help'.");
  });
}
