// The commands that talk to the running application.

#include <cstdio>
#include <stdexcept>

#include "base/ExitCode.h"
#include "base/LocalSocket.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"
#include "base/Text.h"
#include "cli/Commands.h"
#include "cli/StateFile.h"
#include "cli/StatusReport.h"

namespace veloria::cli {

namespace {

constexpr std::size_t longestPreset = 256;

constexpr double shortWait = 0.5;
constexpr double longWait = 5;

Result<SocketReply> ask(const Environment& environment, const nlohmann::json& question, double seconds) {
  const auto path = controlSocketPath(environment);
  if (!path) return SocketReply{};
  return askLocalSocket(*path, question.dump(), seconds);
}

/// Whether the application runs for this user. Waits half a second at most.
bool applicationRuns(const Environment& environment) {
  const auto reply = ask(environment, {{"command", "status"}}, shortWait);
  return !reply || reply->connected;  // an error means that it was there
}

/// Lets the running application carry out a command (see base/LocalSocket.h). Throws std::runtime_error if none runs,
/// if it does not answer in five seconds, or with its own error.
void tellApplication(const Environment& environment, const nlohmann::json& question) {
  const auto reply = ask(environment, question, longWait);
  if (!reply) throw std::runtime_error(reply.error() + ".");
  if (!reply->connected) throw std::runtime_error("Veloria is not running; 'veloria' starts it.");
  const auto answer = parseStrictJson(reply->answer);
  if (!answer || !answer->is_object()) throw std::runtime_error("the running application gave an invalid answer.");
  const auto error = answer->find("error");
  if (error == answer->end()) return;
  throw std::runtime_error(error->is_string() ? printable(error->get<std::string>()) : "the command failed.");
}

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
  if (std::fflush(stdout) != 0) throw std::runtime_error("can't write the status.");
  return done;
}

int runPreset(const CommandLine& line, const Environment& environment) {
  const std::string& name = line.operands[0];
  if (!isPlainText(name, longestPreset)) throw UsageError("'" + printable(name) + "' is not a valid preset name.");
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
