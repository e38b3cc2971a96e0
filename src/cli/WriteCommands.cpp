// The commands that change the state file and do nothing else.

#include <cstdio>
#include <stdexcept>

#include "base/ExitCode.h"
#include "base/Text.h"
#include "cli/Commands.h"
#include "cli/Operands.h"
#include "cli/StateChanges.h"
#include "cli/StateFile.h"

namespace veloria::cli {

namespace {

using nlohmann::json;

/// `what` describes the change for -v.
int write(const CommandLine& line, const Environment& environment, const std::string& what,
          const StateFile::Change& change) {
  const auto path = stateFilePath(environment);
  if (!path) throw std::runtime_error("no home folder is known: set HOME or XDG_DATA_HOME.");
  const auto notice = StateFile(*path).change(change);
  if (!notice) throw std::runtime_error(notice.error());
  if (!notice->empty()) std::fprintf(stderr, "nimbra: %s\n", notice->c_str());
  if (line.verbose) std::fprintf(stderr, "nimbra: wrote %s to %s\n", what.c_str(), path->c_str());
  return done;
}

std::string sessionText(const SessionChoice& session) {
  return " in session '" + printable(session.name) + "'";
}

int report(Activity activity, const char* what, const CommandLine& line, const Environment& environment) {
  const SessionChoice session = line.sessionChoice();
  return write(line, environment, what + sessionText(session),
               [&](json& state, double now) { reportActivity(state, activity, session, now); });
}

}  // namespace

int runBusy(const CommandLine& line, const Environment& environment) {
  return report(Activity::busy, "busy 1, ok 0, err 0", line, environment);
}

int runIdle(const CommandLine& line, const Environment& environment) {
  return report(Activity::idle, "busy 0, ok 0, err 0", line, environment);
}

int runOk(const CommandLine& line, const Environment& environment) {
  return report(Activity::ok, "busy 0, ok 1, err 0", line, environment);
}

int runFail(const CommandLine& line, const Environment& environment) {
  return report(Activity::fail, "busy 0, ok 0, err 1 and the flash", line, environment);
}

int runSet(const CommandLine& line, const Environment& environment) {
  const std::string name = channelName(line.operands[0]);
  const double value = finiteNumber("the value", line.operands[1]);
  std::optional<SessionChoice> session;
  if (line.choosesSession()) session = {line.session.value_or(lifetimeSession(name)), line.ttl};
  return write(line, environment, name + " " + line.operands[1] + (session ? sessionText(*session) : ""),
               [&](json& state, double now) { setChannel(state, name, value, session, now); });
}

int runUnset(const CommandLine& line, const Environment& environment) {
  const std::string name = channelName(line.operands[0]);
  return write(line, environment, name + " 0", [&](json& state, double now) { unsetChannel(state, name, now); });
}

int runPalette(const CommandLine& line, const Environment& environment) {
  if (line.operands.size() == 1 && line.operands[0] == "clear") {
    return write(line, environment, "no palette", clearPalette);
  }
  const auto colors = paletteColors(line.operands);
  return write(line, environment, "a palette of " + std::to_string(colors.size()) + " colours",
               [&](json& state, double now) { setPalette(state, colors, now); });
}

int runClear(const CommandLine& line, const Environment& environment) {
  return write(line, environment, "0 for every channel", clearState);
}

}  // namespace veloria::cli
