#include <QCommandLineParser>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "app/AppStatus.h"
#include "main/SingleInstance.h"
#include "main/commands/Command.h"

namespace veloria {

namespace {

int reportNoneRuns(bool json) {
  if (json) {
    std::puts("{\"running\": false}");
  } else {
    std::puts("Veloria is not running. 'veloria' starts it.");
  }
  return failed;
}

}  // namespace

int runStatus(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription("Shows the state of the running band: whether it draws, and if not, why.");
  parser.addOption({"json", "Print the answer as JSON."});
  if (!parseArguments(parser, "veloria status", arguments, 0)) return done;
  const bool json = parser.isSet("json");
  const auto status = askRunningApplication(R"({"command": "status"})");
  if (!status) return reportNoneRuns(json);
  std::fputs((json ? status->dump(2) + "\n" : statusText(*status)).c_str(), stdout);
  return done;
}

}  // namespace veloria
