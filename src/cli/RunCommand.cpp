#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <system_error>

#include "base/ExitCode.h"
#include "base/Text.h"
#include "cli/ChildProgram.h"
#include "cli/Commands.h"
#include "cli/StateChanges.h"
#include "cli/StateFile.h"

namespace veloria::cli {

namespace {

constexpr double defaultTtl = 60;
constexpr double shortestInterval = 0.1;
constexpr double lockSeconds = 2;

/// Reports to the state file. Errors are only warnings, since the program matters more.
class RunReport {
 public:
  RunReport(const CommandLine& line, const Environment& environment)
      : path_(stateFilePath(environment)),
        running_{line.session.value_or("run-" + std::to_string(::getpid())), line.ttl.value_or(defaultTtl)},
        outcomeSession_(line.sessionChoice().name),
        verbose_(line.verbose) {}

  double interval() const { return std::max(*running_.ttl / 3, shortestInterval); }

  void busy() {
    write([this](nlohmann::json& state, double now) { reportActivity(state, Activity::busy, running_, now); });
  }

  void begin() {
    busy();
    say("busy", running_.name);
  }

  void end(bool succeeded) {
    const Activity outcome = succeeded ? Activity::ok : Activity::fail;
    write([&](nlohmann::json& state, double now) { finishRun(state, running_.name, outcome, outcomeSession_, now); });
    say(succeeded ? "ok" : "fail", outcomeSession_);
  }

 private:
  void write(const StateFile::Change& change) {
    const auto notice = path_ ? StateFile(*path_, lockSeconds).change(change) : Failure{"no home folder is known"};
    const std::string& text = notice ? *notice : notice.error();
    written_ = static_cast<bool>(notice);
    if (text.empty() || (!written_ && warned_)) return;
    warned_ = warned_ || !written_;
    std::fprintf(stderr, "nimbra run: %s\n", text.c_str());
  }

  void say(const char* what, const std::string& session) const {
    if (!verbose_ || !written_) return;
    std::fprintf(stderr, "nimbra run: wrote %s in session '%s'\n", what, printable(session).c_str());
  }

  std::optional<std::filesystem::path> path_;
  SessionChoice running_;
  std::string outcomeSession_;
  bool verbose_;
  bool written_ = false;
  bool warned_ = false;
};

int startFailed(const std::string& program, const std::error_code& error) {
  const int code = exitCodeForExecError(error.value());
  const std::string why = code == notFound ? "was not found" : "can't be started: " + error.message();
  std::fprintf(stderr, "nimbra run: '%s' %s\n", printable(program).c_str(), why.c_str());
  return code;
}

}  // namespace

int runProgram(const CommandLine& line, const Environment& environment) {
  SignalInbox inbox;
  RunReport report(line, environment);
  report.begin();
  try {
    const ChildProgram child(line.operands, inbox);
    const CommandEnd end = child.wait(inbox, report.interval(), [&] { report.busy(); });
    report.end(end.succeeded());
    if (end.kind == CommandEnd::Kind::exited) return end.number;
    inbox.die(end.number);
    return killedBySignal + end.number;
  } catch (const std::system_error& error) {
    report.end(false);
    return startFailed(line.operands.front(), error.code());
  }
}

}  // namespace veloria::cli
