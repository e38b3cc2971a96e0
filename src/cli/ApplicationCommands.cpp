// The commands that talk to the running application.

#include <cstdio>
#include <stdexcept>

#include "base/ExitCode.h"
#include "base/MediaClock.h"
#include "base/PlainText.h"
#include "cli/Commands.h"
#include "cli/RunningApplication.h"
#include "cli/StateFile.h"
#include "cli/StatusReport.h"

namespace veloria::cli {

namespace {

constexpr std::size_t longestPreset = 256;

nlohmann::json readState(const Environment& environment) {
  const auto path = stateFilePath(environment);
  if (!path) return nlohmann::json::object();
  auto state = StateFile(*path).read();
  if (!state) throw std::runtime_error(state.error());
  return *std::move(state);
}

}  // namespace

int runStatus(const CommandLine& line, const Environment& environment) {
  const auto state = readState(environment);
  const bool running = applicationRuns(environment);
  const double now = wallTime();
  const StatusReport report = statusReport(state, running, now);
  const std::string text = line.json ? jsonOf(report, now).dump(2) + "\n" : textOf(report, now);
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) != 0) throw std::runtime_error("the status could not be written.");
  return done;
}

int runPreset(const CommandLine& line, const Environment& environment) {
  const std::string& name = line.operands[0];
  if (!isPlainText(name, longestPreset)) throw UsageError("'" + printable(name) + "' can't be a preset's name.");
  tellApplication(environment, {{"command", "preset"}, {"name", name}});
  return done;
}

int runPause(const CommandLine&, const Environment& environment) {
  tellApplication(environment, {{"command", "pause"}});
  return done;
}

int runResume(const CommandLine&, const Environment& environment) {
  tellApplication(environment, {{"command", "resume"}});
  return done;
}

}  // namespace veloria::cli
